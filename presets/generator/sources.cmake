# Sources of make_factory_bank: the generator, the parameter table (names, bounds, defaults),
# the modulation target lists and the bank file writer. ZIV_ROOT is the tree's root.
set(ZIV_FACTORY_GENERATOR_SOURCES
  ${ZIV_ROOT}/presets/generator/make_factory_bank.cpp
  ${ZIV_ROOT}/plugin/parameter_table.cpp
  ${ZIV_ROOT}/engine/modulation/mod_routing.cpp
  ${ZIV_ROOT}/programs/program_format.cpp)
