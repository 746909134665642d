# Generates the factory bank image source from presets/factory.txt and sets
# ZIV_FACTORY_BANK_SOURCE to it; the same image is written as the bank file ZIV_FACTORY_BANK_FILE
# (Factory.fxb in the build folder), which `cmake --install` copies into the factory presets
# folder. The generator must run on the build machine: a native build builds it as an ordinary
# target, a cross build (mingw) builds it as a nested project with the build machine's default
# compiler.
set(ZIV_FACTORY_PRESETS ${PROJECT_SOURCE_DIR}/presets/factory.txt)
set(ZIV_FACTORY_BANK_SOURCE ${CMAKE_BINARY_DIR}/generated/factory_bank_image.cpp)
set(ZIV_FACTORY_BANK_FILE ${CMAKE_BINARY_DIR}/Factory.fxb)
set(ZIV_ROOT ${PROJECT_SOURCE_DIR})
include(${PROJECT_SOURCE_DIR}/presets/generator/sources.cmake)

if(CMAKE_CROSSCOMPILING)
  include(ExternalProject)
  set(generator_dir ${CMAKE_BINARY_DIR}/factory-bank-generator)
  set(generator ${generator_dir}/make_factory_bank${CMAKE_HOST_EXECUTABLE_SUFFIX})
  ExternalProject_Add(make_factory_bank_host
    SOURCE_DIR ${PROJECT_SOURCE_DIR}/presets/generator
    BINARY_DIR ${generator_dir}
    CMAKE_ARGS -DCMAKE_BUILD_TYPE=Release -DZIV_ROOT=${PROJECT_SOURCE_DIR}
    INSTALL_COMMAND ""
    BUILD_ALWAYS ON
    BUILD_BYPRODUCTS ${generator})
  set(generator_target make_factory_bank_host)
else()
  add_executable(make_factory_bank ${ZIV_FACTORY_GENERATOR_SOURCES})
  target_include_directories(make_factory_bank PRIVATE ${PROJECT_SOURCE_DIR})
  set(generator $<TARGET_FILE:make_factory_bank>)
  set(generator_target make_factory_bank)
endif()

add_custom_command(
  OUTPUT ${ZIV_FACTORY_BANK_SOURCE} ${ZIV_FACTORY_BANK_FILE}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/generated
  COMMAND ${generator} ${ZIV_FACTORY_PRESETS} ${ZIV_FACTORY_BANK_SOURCE} ${ZIV_FACTORY_BANK_FILE}
  DEPENDS ${ZIV_FACTORY_PRESETS} ${generator_target}
  COMMENT "Generating the factory bank image from presets/factory.txt"
  VERBATIM)

# `cmake --install` copies the bank into the factory presets folder, the same folder the plug-in
# lists (programs/data_folder.cpp). Linux: $XDG_DATA_HOME/quorvantis/... ($HOME/.local/share
# when XDG_DATA_HOME is unset or relative), decided when the install runs. Windows: the install
# prefix stands for ProgramData (--prefix "C:/ProgramData", or a wine prefix's drive_c/ProgramData).
set(ZIV_FACTORY_PRESET_SUBFOLDER "quorvantis/presets/Vrn1/Factory Presets")
if(WIN32)
  install(FILES ${ZIV_FACTORY_BANK_FILE} DESTINATION ${ZIV_FACTORY_PRESET_SUBFOLDER})
else()
  install(CODE "set(ZIV_FACTORY_BANK_FILE \"${ZIV_FACTORY_BANK_FILE}\")
    set(ZIV_FACTORY_PRESET_SUBFOLDER \"${ZIV_FACTORY_PRESET_SUBFOLDER}\")")
  install(CODE [[
    set(data_home "$ENV{XDG_DATA_HOME}")
    if(NOT IS_ABSOLUTE "${data_home}")
      set(data_home "$ENV{HOME}/.local/share")
    endif()
    file(INSTALL "${ZIV_FACTORY_BANK_FILE}" DESTINATION "${data_home}/${ZIV_FACTORY_PRESET_SUBFOLDER}")
  ]])
endif()
