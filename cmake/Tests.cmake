# A folder that does not exist, for files that a test must not find.
set(PELMORA_ABSENT ${CMAKE_BINARY_DIR}/absent)

# pelmora_tests(<program> SOURCES <file>... LIBRARIES <target>... [LABELS <label>...] [DEPENDS <target>...] [ENVIRONMENT ...])
# A program with the classes of tests in its sources tst_<name>.cpp, and a test tst_<name> for each, in a process of its
# own. It has no display, unless its label asks for one, and does not use the machine's card readers. A folder has one
# program, as each costs a link and a search for moc; what differs from the others of its folder in what is linked, or in
# its environment, has another.
function(pelmora_tests program)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;LABELS;DEPENDS;ENVIRONMENT")
  add_executable(${program} ${arg_SOURCES})
  set_target_properties(${program} PROPERTIES AUTOUIC OFF PELMORA_IS_TEST ON)
  target_link_libraries(${program} PRIVATE ${arg_LIBRARIES} test_program Qt6::Test)
  target_precompile_headers(${program} REUSE_FROM test_headers)
  target_compile_definitions(${program} PRIVATE
    PELMORA_STAGE="${PELMORA_STAGE}" PELMORA_STAGE_SHARE="${PELMORA_STAGE_SHARE}" PELMORA_SOURCE="${CMAKE_SOURCE_DIR}")
  # In a unity build all sources but the first look like headers.
  if(CMAKE_UNITY_BUILD)
    target_compile_options(${program} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
  if(arg_DEPENDS)
    add_dependencies(${program} ${arg_DEPENDS})
  endif()
  foreach(source IN LISTS arg_SOURCES)
    cmake_path(GET source STEM name)
    if(name MATCHES "^tst_")
      add_test(NAME ${name} COMMAND ${program} ${name})
      set_tests_properties(${name} PROPERTIES
        TIMEOUT 120
        LABELS "${arg_LABELS}"
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;PCSCLITE_CSOCK_NAME=${PELMORA_ABSENT}/pcscd.comm;${arg_ENVIRONMENT}")
    endif()
  endforeach()
endfunction()
