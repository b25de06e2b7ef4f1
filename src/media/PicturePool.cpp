#include "media/PicturePool.h"

#include <mutex>
#include <utility>
#include <vector>

namespace vesk::media {

struct PicturePool::Shelf {
  std::mutex mutex;
  std::vector<std::unique_ptr<I420Picture>> pictures;

  std::unique_ptr<I420Picture> take() {
    const std::scoped_lock lock(mutex);
    if (pictures.empty()) {
      return nullptr;
    }
    auto picture = std::move(pictures.back());
    pictures.pop_back();
    return picture;
  }

  void put(std::unique_ptr<I420Picture> picture) {
    const std::scoped_lock lock(mutex);
    pictures.push_back(std::move(picture));
  }
};

PicturePool::PicturePool(int width, int height)
    : width_(width), height_(height), shelf_(std::make_shared<Shelf>()) {}

std::shared_ptr<I420Picture> PicturePool::acquire() {
  auto picture = shelf_->take();
  if (picture == nullptr) {
    picture = std::make_unique<I420Picture>(width_, height_);
  }
  return {picture.release(), [shelf = shelf_](I420Picture* returned) {
            shelf->put(std::unique_ptr<I420Picture>(returned));
          }};
}

}  // namespace vesk::media
