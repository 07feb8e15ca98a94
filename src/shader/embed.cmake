# Writes text files as string constants: NAME.vert becomes NAME_vsh, NAME.frag NAME_fsh.
set(text "")
foreach(file IN LISTS FILES)
  get_filename_component(name ${file} NAME_WE)
  get_filename_component(extension ${file} EXT)
  string(REGEX REPLACE "^\\.(.).*" "\\1" stage ${extension})
  file(READ ${file} content)
  # No reader but the driver: blanks and line ends that part nothing are left out.
  string(REGEX REPLACE "[ \n]*([]=+*/<>?:,(){}]) ?\n?" "\\1" content "${content}")
  string(REGEX REPLACE "[\n ]+" " " content "${content}")
  string(REGEX REPLACE "([{};]) " "\\1" content "${content}")
  string(APPEND text "constexpr char ${name}_${stage}sh[] = R\"glsl(${content})glsl\";\n")
endforeach()
file(WRITE ${OUT} "${text}")
