vesk_bench(event_log_bench
  SOURCES EventLogBench.cpp
  LIBRARIES vesk::package simdjson::simdjson)
