vesk_fuzz(meta
  SOURCES MetaFuzz.cpp
  LIBRARIES vesk::package)
vesk_fuzz(events
  SOURCES EventsFuzz.cpp
  LIBRARIES vesk::package)
vesk_fuzz(edit
  SOURCES EditFuzz.cpp
  LIBRARIES vesk::motion)
