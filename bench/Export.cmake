vesk_bench(export_bench SOURCES ExportBench.cpp LIBRARIES vesk::export)
