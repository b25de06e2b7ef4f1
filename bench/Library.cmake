vesk_bench(library_bench SOURCES LibraryBench.cpp LIBRARIES vesk::package)
