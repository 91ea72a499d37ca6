# Run by CPack in the packages' folder: leaves out of the programs what nobody runs or reads there.
# The image tool is a script.
file(GLOB programs "${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/toplist" "${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/toplistctl")
execute_process(
  COMMAND ${CPACK_TOPLIST_STRIP} --strip-all --remove-section=.comment --remove-section=.note ${programs}
  COMMAND_ERROR_IS_FATAL ANY)
