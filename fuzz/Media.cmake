vesk_fuzz(media
  SOURCES MediaFuzz.cpp
  LIBRARIES vesk::export)
