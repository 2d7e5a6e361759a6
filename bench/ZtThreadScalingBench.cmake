# zt-thread-scaling-bench: one conversion split into row bands on 1 to N
# threads of the caller (examples/threads/ZtBandedConvert.h).
find_package(Threads REQUIRED)
add_executable(zt-thread-scaling-bench ${CMAKE_CURRENT_LIST_DIR}/ZtThreadScalingBench.cpp)
target_include_directories(zt-thread-scaling-bench PRIVATE ${PROJECT_SOURCE_DIR}/examples/threads)
target_link_libraries(zt-thread-scaling-bench
  PRIVATE Zt::CoreEx benchmark::benchmark Threads::Threads zt_test_options)
