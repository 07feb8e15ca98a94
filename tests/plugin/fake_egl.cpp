// The plug-in is linked against libEGL and calls nothing in it: the name is all that is needed.
