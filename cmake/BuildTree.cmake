# The build folder has the installed tree under stage/, so that programs find each other and their resources by the same
# relative paths before and after installation.
set(PELMORA_STAGE ${CMAKE_BINARY_DIR}/stage)
set(PELMORA_STAGE_BIN ${PELMORA_STAGE}/bin)
set(PELMORA_STAGE_LIBEXEC ${PELMORA_STAGE}/libexec/pelmora)
set(PELMORA_STAGE_SHARE ${PELMORA_STAGE}/share/pelmora)
