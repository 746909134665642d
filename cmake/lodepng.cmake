# lodepng, the PNG decoder of the editor's images (and the encoder of the image generator and the
# host's screenshots), comes from the npm registry's package lodepng@2.3.0: its vendor/lodepng.c
# and vendor/lodepng.h. The package is fetched once per build folder with `npm pack`, checked
# against the registry's published SHA-512 integrity, unpacked there and compiled as the static
# library `lodepng`. Nothing of it enters the source tree.
set(ZIV_LODEPNG_VERSION 2.3.0)
# The registry's integrity "sha512-h/E7SLSL1G75...6U0w==" of lodepng-2.3.0.tgz, in hex.
set(ZIV_LODEPNG_SHA512
  87f13b48b48bd46ef903d174481418d539c14fdc7bdfb4c59d322e7ab3ee7aba24f537b6f72e7ca7e14509967f0c479811e47ef6327e21f8033ccf3d724e94d3)

set(lodepng_dir ${CMAKE_BINARY_DIR}/_deps/lodepng)
set(lodepng_tarball ${lodepng_dir}/lodepng-${ZIV_LODEPNG_VERSION}.tgz)
if(NOT EXISTS ${lodepng_dir}/package/vendor/lodepng.c)
  file(MAKE_DIRECTORY ${lodepng_dir})
  find_program(ZIV_NPM npm REQUIRED)
  execute_process(
    COMMAND ${ZIV_NPM} pack lodepng@${ZIV_LODEPNG_VERSION} --silent --pack-destination ${lodepng_dir}
    WORKING_DIRECTORY ${lodepng_dir}
    RESULT_VARIABLE npm_result OUTPUT_QUIET ERROR_VARIABLE npm_error)
  if(NOT npm_result EQUAL 0 OR NOT EXISTS ${lodepng_tarball})
    message(FATAL_ERROR "lodepng: 'npm pack lodepng@${ZIV_LODEPNG_VERSION}' failed: ${npm_error}")
  endif()
  file(SHA512 ${lodepng_tarball} lodepng_hash)
  if(NOT lodepng_hash STREQUAL ZIV_LODEPNG_SHA512)
    file(REMOVE ${lodepng_tarball})
    message(FATAL_ERROR "lodepng: ${lodepng_tarball} does not match the pinned SHA-512")
  endif()
  file(ARCHIVE_EXTRACT INPUT ${lodepng_tarball} DESTINATION ${lodepng_dir} PATTERNS package/vendor)
endif()

add_library(lodepng STATIC ${lodepng_dir}/package/vendor/lodepng.c)
set_source_files_properties(${lodepng_dir}/package/vendor/lodepng.c PROPERTIES LANGUAGE C COMPILE_OPTIONS -w)
target_include_directories(lodepng SYSTEM PUBLIC ${lodepng_dir}/package/vendor)
