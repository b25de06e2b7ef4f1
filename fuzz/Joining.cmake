vesk_fuzz(joining
  SOURCES JoiningFuzz.cpp
  LIBRARIES vesk::media)
