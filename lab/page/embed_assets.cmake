# Writes the files of the page as C++ constants.
#   cmake -DASSETS=folder -DOUTPUT=file -P this
cmake_minimum_required(VERSION 3.25)

# constant(<name> <file>...): the files one behind the other as one constant.
function(constant name)
  set(text "")
  foreach(file IN LISTS ARGN)
    file(READ ${file} content)
    string(APPEND text "${content}")
  endforeach()
  string(FIND "${text}" ")rtif_asset\"" end)
  if(NOT end EQUAL -1)
    message(FATAL_ERROR "${name} holds the end of its own constant")
  endif()
  file(APPEND ${OUTPUT}.new
    "constexpr std::string_view ${name} = R\"rtif_asset(${text})rtif_asset\";\n")
endfunction()

file(GLOB styles ${ASSETS}/*.css)
file(GLOB scripts ${ASSETS}/*.js)
# What runs first of all stands last.
list(REMOVE_ITEM scripts ${ASSETS}/page.js)
file(WRITE ${OUTPUT}.new "")
constant(PAGE_FRAME ${ASSETS}/page.html)
constant(PAGE_STYLE ${styles})
constant(PAGE_SCRIPT ${scripts} ${ASSETS}/page.js)
file(RENAME ${OUTPUT}.new ${OUTPUT})
