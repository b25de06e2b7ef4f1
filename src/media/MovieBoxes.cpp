#include "media/MovieBoxes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "media/Box.h"

namespace vesk::media {
namespace {

constexpr std::uint64_t shortHeader = 8;
constexpr std::uint64_t longHeader = 16;
constexpr std::uint64_t sizeIsRest = 0;
/// libav goes no deeper.
constexpr int deepestNesting = 10;
/// Takes of many hours have some hundred thousand. Each costs a look into the file.
constexpr int mostBoxes = 4'000'000;

/// Boxes in which libav looks for further boxes.
constexpr std::array<std::string_view, 15> containers{"moov", "trak", "mdia", "minf", "stbl",
                                                      "edts", "dinf", "udta", "mvex", "moof",
                                                      "traf", "wave", "sinf", "free", "hoov"};

/// A box of a file: what it is, and where its content lies.
struct FileBox {
  std::array<char, 4> type{};
  std::uint64_t content = 0;
  std::uint64_t size = 0;  ///< of all of it, as it says
  bool hasRest = false;    ///< runs as far as what it lies in

  std::string_view name() const { return {type.data(), type.size()}; }
};

/// Reads numbers and boxes anywhere in a file.
class BoxFile {
 public:
  explicit BoxFile(const std::filesystem::path& file) : stream_(file, std::ios::binary) {
    std::error_code failure;
    const std::uint64_t size = std::filesystem::file_size(file, failure);
    size_ = failure || !stream_ ? 0 : size;
  }

  /// 0 for a file that cannot be read.
  std::uint64_t size() const { return size_; }

  /// The box at a position; nothing where none can be.
  std::optional<FileBox> boxAt(std::uint64_t position) {
    FileBox box{.content = position + shortHeader, .size = number(position, 4)};
    stream_.read(box.type.data(), box.type.size());
    if (box.size == sizeIsLong) {
      box.content = position + longHeader;
      box.size = number(position + shortHeader, 8);
    }
    box.hasRest = box.size == sizeIsRest;
    return box.hasRest || box.size >= shortHeader ? std::optional(box) : std::nullopt;
  }

  /// A big-endian number of so many bytes; 0 behind the end.
  std::uint64_t number(std::uint64_t position, std::size_t count) {
    std::array<char, sizeof(std::uint64_t)> bytes{};
    stream_.clear();
    stream_.seekg(static_cast<std::streamoff>(position));
    stream_.read(bytes.data(), static_cast<std::streamsize>(count));
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
      value = value << 8 | static_cast<unsigned char>(bytes.at(i));
    }
    return value;
  }

 private:
  std::ifstream stream_;
  std::uint64_t size_ = 0;
};

/// Adds up the samples that the boxes of a file claim.
class SampleCount {
 public:
  explicit SampleCount(BoxFile& file) : file_(file) {}

  bool isTooHigh() {
    visit(0, file_.size(), 0);
    return isTooHigh_;
  }

 private:
  void visit(std::uint64_t position, std::uint64_t end, int depth) {
    while (!isTooHigh_ && position + shortHeader <= end) {
      const auto box = file_.boxAt(position);
      if (!box) return;
      const std::uint64_t size =
          box->hasRest ? end - position : std::min(box->size, end - position);
      count(*box, position + size, depth);
      position += size;
    }
  }

  void count(const FileBox& box, std::uint64_t end, int depth) {
    if (++boxes_ > mostBoxes || box.name() == "cmov") isTooHigh_ = true;
    if (box.name() == "stsz" || box.name() == "stz2") add(file_.number(box.content + 8, 4));
    if (box.name() == "trun") add(file_.number(box.content + 4, 4));
    if (depth < deepestNesting && std::ranges::find(containers, box.name()) != containers.end()) {
      visit(box.content, end, depth + 1);
    }
  }

  void add(std::uint64_t samples) {
    samples_ += samples;
    isTooHigh_ = isTooHigh_ || samples_ > file_.size();
  }

  BoxFile& file_;
  int boxes_ = 0;
  std::uint64_t samples_ = 0;
  bool isTooHigh_ = false;
};

}  // namespace

bool endsInsideABox(const std::filesystem::path& file) {
  BoxFile boxes(file);
  std::uint64_t position = 0;
  while (position + shortHeader <= boxes.size()) {
    const auto box = boxes.boxAt(position);
    if (!box || box->hasRest) {
      return false;
    }
    if (box->size > boxes.size() - position) {
      return true;
    }
    position += box->size;
  }
  return false;
}

bool claimsTooManySamples(const std::filesystem::path& file) {
  BoxFile boxes(file);
  return SampleCount(boxes).isTooHigh();
}

}  // namespace vesk::media
