# A folder that does not exist, for files that a test must not find.
set(PELMORA_ABSENT ${CMAKE_BINARY_DIR}/absent)

# pelmora_test(<name> SOURCES <file>... LIBRARIES <target>... [LABELS <label>...] [DEPENDS <target>...] [ENVIRONMENT ...])
# A QtTest program and a test of the same name. It has no display, unless its label asks for one, and does not use the
# machine's card readers.
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
