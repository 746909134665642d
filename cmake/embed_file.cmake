# Writes OUTPUT, a C++ source that holds the bytes of INPUT as the constant array SYMBOL and its
# length as SYMBOL_size, both in the namespace ziv::embedded. Run as a script:
#   cmake -DINPUT=<file> -DOUTPUT=<source> -DSYMBOL=<identifier> -P embed_file.cmake
# It is plain CMake, so it runs the same in a native and in a cross build.
file(READ "${INPUT}" hex HEX)
string(LENGTH "${hex}" digits)
math(EXPR size "${digits} / 2")
if(size EQUAL 0)
  message(FATAL_ERROR "embed_file: ${INPUT} is empty")
endif()
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
file(WRITE "${OUTPUT}"
  "// Made by the build from ${INPUT}; do not edit.\n"
  "#include <cstddef>\n\n"
  "namespace ziv::embedded {\n"
  "extern const unsigned char ${SYMBOL}[] = {${bytes}};\n"
  "extern const std::size_t ${SYMBOL}_size = ${size};\n"
  "}  // namespace ziv::embedded\n")
