vesk_bench(capture_bench SOURCES CaptureBench.cpp LIBRARIES vesk::media)
