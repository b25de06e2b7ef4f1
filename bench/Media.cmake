vesk_bench(media_bench SOURCES MediaBench.cpp LIBRARIES vesk::media)
