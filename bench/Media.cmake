vesk_bench(media_bench SOURCES MediaBench.cpp MediaFeedBench.cpp LIBRARIES vesk::media)
