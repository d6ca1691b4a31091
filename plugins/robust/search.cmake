# The search on values alone, which knows nothing of the package's classes: for the plug-in, its tests and the
# benchmarks. Needs the target plugin_common.
find_package(TBB REQUIRED)
find_package(Eigen3 3.4 REQUIRED NO_MODULE)

add_library(robust_search STATIC
  ${CMAKE_CURRENT_LIST_DIR}/src/CandidateSearch.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/Comparison.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/Confidence.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/Content.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/Field.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/Hull.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/Limits.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/Pyramid.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/ReducedSlice.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/RigidMotion.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/RobustSearch.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/StackSolver.cpp
  ${CMAKE_CURRENT_LIST_DIR}/src/TurnedSpectra.cpp)
target_include_directories(robust_search PUBLIC ${CMAKE_CURRENT_LIST_DIR}/src)
target_link_libraries(robust_search PUBLIC plugin_common PRIVATE TBB::tbb Eigen3::Eigen)
target_compile_options(robust_search PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wfloat-conversion
  # The same bytes on every machine: no fused multiply-add where the code says multiply and add.
  -ffp-contract=off)
if(CMAKE_CXX_FLAGS MATCHES "fsanitize=thread")
  # oneTBB as packaged is not instrumented and drowns the thread sanitizer in reports.
  target_compile_definitions(robust_search PRIVATE ZX_SERIAL_KERNELS)
endif()
