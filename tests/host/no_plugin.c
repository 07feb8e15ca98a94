/* A library that is no plug-in. */
extern int nothing;
int nothing;
