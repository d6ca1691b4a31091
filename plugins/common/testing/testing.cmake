# Made and real slices, and the fixture in which a method runs, for the tests of the plug-ins.
find_package(GTest REQUIRED)
include(GoogleTest)

# Folder of the real pictures; tests skip when it is not there. The variable ZX_TEST_DATA of the environment
# goes before it.
set(TEST_DATA "" CACHE PATH "Folder of the test data")

add_library(plugin_testing STATIC ${CMAKE_CURRENT_LIST_DIR}/AlignMethodTest.cpp
                                  ${CMAKE_CURRENT_LIST_DIR}/TestSlices.cpp)
target_include_directories(plugin_testing PUBLIC ${CMAKE_CURRENT_LIST_DIR})
target_link_libraries(plugin_testing PUBLIC zxalign::sdk zxalign::numbers Qt6::Gui GTest::gtest_main)
target_compile_options(plugin_testing PRIVATE -Wall -Wextra -Wpedantic -Wshadow)
target_compile_definitions(plugin_testing PRIVATE TEST_DATA="${TEST_DATA}")

# plugin_add_test(<name> <libraries>...): the test of one class.
function(plugin_add_test name)
  add_executable(${name} ${name}.cpp)
  target_link_libraries(${name} PRIVATE plugin_testing ${ARGN})
  target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wshadow)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 600 PROPERTIES TIMEOUT 3600
    ENVIRONMENT "ZX_PACKAGE_PATH=$<TARGET_FILE_DIR:zxalign::package>")
endfunction()
