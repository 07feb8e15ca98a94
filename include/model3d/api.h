/* Export mark of the plug-in's public operations; everything else in it stays hidden. */
#ifndef MODEL3D_API_H
#define MODEL3D_API_H

#if defined(__GNUC__)
#define MODEL3D_API __attribute__((visibility("default")))
#else
#define MODEL3D_API
#endif

#endif
