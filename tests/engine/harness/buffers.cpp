#include "tests/engine/harness/buffers.h"

#include <new>
#include <vector>

namespace zal::test::harness {
namespace {

constexpr std::align_val_t kAlignment{64};
constexpr std::size_t kLargeBlock = std::size_t{1} << 20;
constexpr std::size_t kKeptBlocks = 16;

// Exact sizes only, so that AddressSanitizer still sees the end of each block.
class KeptBlocks {
 public:
  ~KeptBlocks() {
    for (const Kept& kept : kept_) ::operator delete(kept.block, kAlignment);
  }

  unsigned char* Take(std::size_t size) {
    for (std::size_t i = 0; i < kept_.size(); ++i) {
      if (kept_[i].size != size) continue;
      unsigned char* block = kept_[i].block;
      kept_.erase(kept_.begin() + static_cast<std::ptrdiff_t>(i));
      return block;
    }
    return nullptr;
  }

  void Keep(unsigned char* block, std::size_t size) {
    if (kept_.size() == kKeptBlocks) {
      ::operator delete(kept_.front().block, kAlignment);
      kept_.erase(kept_.begin());
    }
    kept_.push_back({size, block});
  }

 private:
  struct Kept {
    std::size_t size;
    unsigned char* block;
  };
  std::vector<Kept> kept_;
};

thread_local KeptBlocks t_kept_blocks;

}  // namespace

unsigned char* AllocateBlock(std::size_t size) {
  if (size >= kLargeBlock) {
    if (unsigned char* block = t_kept_blocks.Take(size)) return block;
  }
  return static_cast<unsigned char*>(::operator new(size, kAlignment));
}

void ReleaseBlock(unsigned char* block, std::size_t size) {
  if (size >= kLargeBlock) {
    t_kept_blocks.Keep(block, size);
  } else {
    ::operator delete(block, kAlignment);
  }
}

}  // namespace zal::test::harness
