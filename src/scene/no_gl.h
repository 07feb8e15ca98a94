// What is left of the frame driver where trees are only built and looked at.
#ifndef SCENE_NO_GL_H
#define SCENE_NO_GL_H

// Calls of load_incomplete so far. There is no next frame that would load the model again.
extern int incomplete_loads;

#endif
