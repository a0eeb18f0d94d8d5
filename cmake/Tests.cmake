# A folder that is never made, for what a test must not find.
set(PELMORA_ABSENT ${CMAKE_BINARY_DIR}/absent)

# pelmora_test(<name> SOURCES <file>... LIBRARIES <target>... [LABELS <label>...] [DEPENDS <target>...] [ENVIRONMENT ...])
# One QtTest program: a test of the same name, without a display unless its label says otherwise, and without the card
# readers of the machine.
function(pelmora_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;LABELS;DEPENDS;ENVIRONMENT")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} test_kit Qt6::Test)
  target_precompile_headers(${name} REUSE_FROM test_headers)
  target_compile_definitions(${name} PRIVATE
    PELMORA_STAGE="${PELMORA_STAGE}" PELMORA_STAGE_SHARE="${PELMORA_STAGE_SHARE}" PELMORA_SOURCE="${CMAKE_SOURCE_DIR}")
  if(arg_DEPENDS)
    add_dependencies(${name} ${arg_DEPENDS})
  endif()
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES
    TIMEOUT 120
    LABELS "${arg_LABELS}"
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;PCSCLITE_CSOCK_NAME=${PELMORA_ABSENT}/pcscd.comm;${arg_ENVIRONMENT}")
endfunction()
