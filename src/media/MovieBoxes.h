#pragma once

#include <filesystem>

namespace vesk::media {

/// Whether the last top-level box of a QuickTime or MP4 file (ISO/IEC 14496-12, section 4.2) claims
/// more bytes than the file has. False for a file that cannot be read or is no such file.
[[nodiscard]] bool endsInsideABox(const std::filesystem::path& file);

/// Whether the index of such a file claims more samples than the file has bytes, or is compressed
/// so that nobody can tell. libav would make room for all of them. False for a file that cannot be
/// read or is no such file.
[[nodiscard]] bool claimsTooManySamples(const std::filesystem::path& file);

}  // namespace vesk::media
