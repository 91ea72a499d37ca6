# Run by CPack in the package's folder: leaves out of the programs what nobody runs or reads there.
file(GLOB programs "${CPACK_TEMPORARY_DIRECTORY}/usr/bin/*")
execute_process(
  COMMAND strip --strip-all --remove-section=.comment --remove-section=.note ${programs}
  COMMAND_ERROR_IS_FATAL ANY)
