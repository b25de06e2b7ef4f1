#pragma once

#include <string>

namespace vesk::media {

/// Why a movie could not be read or written. `message` is a phrase in the user's language, without
/// a closing stop, that names the file and the cause.
struct MediaError {
  enum class Kind {
    openFailed,    ///< the file is missing, not readable, not a regular file, or no movie
    noVideoTrack,  ///< the movie has no picture
    decodeFailed,  ///< the movie ends before its time or its pictures cannot be decoded
    encodeFailed,  ///< the encoder gave up
    writeFailed,   ///< the folder is missing or not writable, or the device failed
    diskFull,      ///< no space, no quota, or the file grew over the file system's limit
    unsupported,   ///< this build of FFmpeg or this size cannot do what was asked
  };
  Kind kind = Kind::openFailed;
  std::string message;
  bool operator==(const MediaError&) const = default;
};

}  // namespace vesk::media
