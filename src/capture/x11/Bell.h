#pragma once

namespace vesk::capture::x11 {

/// Wakes a thread that polls descriptors. May be used from any thread.
class Bell {
 public:
  Bell();
  Bell(const Bell&) = delete;
  Bell& operator=(const Bell&) = delete;
  ~Bell();

  /// Readable while the bell rings.
  int descriptor() const { return descriptor_; }
  void ring() const;
  void silence() const;

 private:
  int descriptor_;
};

}  // namespace vesk::capture::x11
