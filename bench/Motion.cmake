vesk_bench(motion_bench SOURCES MotionBench.cpp TrackCostBench.cpp LIBRARIES vesk::motion)
target_include_directories(motion_bench PRIVATE "${CMAKE_SOURCE_DIR}/tests")
