# Warnings, Qt's strict definitions and hardening, in one interface target that all targets link.
add_library(pelmora_options INTERFACE)

option(PELMORA_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" ON)
set(PELMORA_SANITIZERS "" CACHE STRING "Sanitizers for every target, for example address,undefined")

target_include_directories(pelmora_options INTERFACE ${CMAKE_SOURCE_DIR})

target_compile_options(pelmora_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual
  $<$<BOOL:${PELMORA_WARNINGS_AS_ERRORS}>:-Werror>)

target_compile_definitions(pelmora_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_NO_FOREACH QT_NO_KEYWORDS QT_DISABLE_DEPRECATED_BEFORE=0x060400
  _GLIBCXX_ASSERTIONS)

# A test's own sources are compiled as fast as can be: compiling them takes far longer than running them. So they are not
# optimised, and the undefined behaviour that is looked for is that of the program.
define_property(TARGET PROPERTY PELMORA_IS_TEST BRIEF_DOCS "The target's own sources are tests.")
set(is_test $<BOOL:$<TARGET_PROPERTY:PELMORA_IS_TEST>>)
set(is_optimised $<AND:$<CONFIG:Release,RelWithDebInfo>,$<NOT:${is_test}>>)

if(PELMORA_SANITIZERS)
  target_compile_options(pelmora_options INTERFACE
    -fsanitize=${PELMORA_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer
    $<${is_test}:-fno-sanitize=undefined>)
  target_link_options(pelmora_options INTERFACE -fsanitize=${PELMORA_SANITIZERS})
else()
  # _FORTIFY_SOURCE needs optimisation, and sanitizers replace the functions that it checks.
  target_compile_options(pelmora_options INTERFACE
    $<${is_optimised}:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -fstack-protector-strong -Wformat -Werror=format-security>
    $<${is_test}:-O0>)
  # The same as above for both, so that CI's compiler cache serves them. Compilers for other processors may not have these.
  include(CheckCXXCompilerFlag)
  foreach(flag IN ITEMS -fstack-clash-protection -fcf-protection -Wdate-time)
    string(MAKE_C_IDENTIFIER PELMORA_HAS${flag} known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      target_compile_options(pelmora_options INTERFACE $<${is_optimised}:${flag}>)
    endif()
  endforeach()
endif()

# In a unity build the compiler takes all sources for headers.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  target_compile_options(pelmora_options INTERFACE -Wno-subobject-linkage)
endif()

# Programs do not contain the build folder's path, so the same sources give the same files in any folder.
target_compile_options(pelmora_options INTERFACE "$<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>")

target_link_options(pelmora_options INTERFACE -Wl,-z,relro,-z,now -Wl,--as-needed)

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
