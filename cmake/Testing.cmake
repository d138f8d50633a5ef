# ord8_add_tests(NAME SOURCES files... LIBS targets...)
# One GoogleTest executable per module; every TEST becomes its own CTest test.
function(ord8_add_tests name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gtest GTest::gtest_main Threads::Threads)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  # Sanitized code runs several times slower: tests that repeat random cases repeat fewer.
  if(ORD8_SANITIZE)
    target_compile_definitions(${name} PRIVATE ORD8_SANITIZED)
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
    PROPERTIES ENVIRONMENT "ORD8_SOURCE_DIR=${PROJECT_SOURCE_DIR};ORD8_BINARY_DIR=${PROJECT_BINARY_DIR}")
endfunction()
