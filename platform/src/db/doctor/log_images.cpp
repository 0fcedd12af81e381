#include "db/doctor/log_images.h"

#include "db/doctor/records.h"

#include <array>
#include <cstring>

namespace DBStore::internal {
namespace {

constexpr std::size_t kHeader = 32;
constexpr std::size_t kFrameHeader = 24;
constexpr std::uint64_t kMagic = 0x377f0682;  // the last bit says how checksums read their words
constexpr std::uint64_t kVersion = 3007000;

struct Sums {
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  friend bool operator==(const Sums&, const Sums&) = default;
};

std::uint32_t NumberAt(std::string_view bytes, std::size_t offset) {
  return static_cast<std::uint32_t>(ReadBigEndian(bytes.substr(offset), 4));
}

std::uint32_t WordAt(std::string_view bytes, std::size_t offset, bool bigEndian) {
  const std::uint32_t word = NumberAt(bytes, offset);
  return bigEndian ? word : __builtin_bswap32(word);
}

Sums SumUp(std::string_view bytes, bool bigEndian, Sums sums) {
  for (std::size_t i = 0; i + 8 <= bytes.size(); i += 8) {
    sums.first += WordAt(bytes, i, bigEndian) + sums.second;
    sums.second += WordAt(bytes, i + 4, bigEndian) + sums.first;
  }
  return sums;
}

class Log {
 public:
  Log(std::string_view bytes, std::size_t pageSize) : bytes_(bytes), pageSize_(pageSize) {
    headerIsSound_ = ReadHeader();
    if (!headerIsSound_) {
      GuessHeader();
    }
  }

  LogImages Read() const {
    LogImages images;
    images.pageSize = pageSize_;
    std::size_t seen = 0;     // frames up to the last commit that SQLite sees
    std::size_t chained = 0;  // frames that it goes on from
    while (chained < Count() && IsSound(chained)) {
      seen = NumberAt(Frame(chained), 4) != 0 ? chained + 1 : seen;
      ++chained;
    }
    Take(0, seen, images.pages);
    const std::size_t end = EndOfCommits(chained);
    if (end > chained) {
      for (std::size_t i = chained; i < end; ++i) {
        images.damagedFrames += IsSound(i) ? 0U : 1U;
      }
      Take(seen, end, images.hidden);
      // What was written over a damage looks like the rest of what was there.
      images.hiddenIsNewer = !headerIsSound_ || !IsOfThisLog(chained) || !LooksLikePage(chained);
    }
    return images;
  }

 private:
  std::size_t Offset(std::size_t frame) const {
    return kHeader + frame * (kFrameHeader + pageSize_);
  }
  std::size_t Count() const {
    return bytes_.size() < kHeader ? 0 : (bytes_.size() - kHeader) / (kFrameHeader + pageSize_);
  }
  std::string_view Frame(std::size_t frame) const {
    return bytes_.substr(Offset(frame), kFrameHeader + pageSize_);
  }
  static Sums Stored(std::string_view header, std::size_t offset) {
    return {NumberAt(header, offset), NumberAt(header, offset + 4)};
  }

  bool ReadHeader() {
    if (bytes_.size() < kHeader || (NumberAt(bytes_, 0) & ~1U) != kMagic ||
        NumberAt(bytes_, 4) != kVersion) {
      return false;
    }
    bigEndian_ = (NumberAt(bytes_, 0) & 1U) != 0;
    if (SumUp(bytes_.substr(0, 24), bigEndian_, {}) != Stored(bytes_, 24)) {
      return false;
    }
    const std::size_t size = NumberAt(bytes_, 8);
    if (size < 512 || size > 65536 || (size & (size - 1)) != 0) {
      return false;
    }
    pageSize_ = size;
    std::memcpy(salts_.data(), bytes_.data() + 16, salts_.size());
    return true;
  }

  // The first two frames that follow on each other show what the header said.
  void GuessHeader() {
    for (std::size_t i = 1; i < Count(); ++i) {
      for (const bool bigEndian : {false, true}) {
        bigEndian_ = bigEndian;
        if (HasSumAfter(i, Stored(Frame(i - 1), 16))) {
          std::memcpy(salts_.data(), Frame(i).data() + 8, salts_.size());
          return;
        }
      }
    }
  }

  bool HasSumAfter(std::size_t frame, Sums before) const {
    const std::string_view bytes = Frame(frame);
    Sums sums = SumUp(bytes.substr(0, 8), bigEndian_, before);
    sums = SumUp(bytes.substr(kFrameHeader), bigEndian_, sums);
    return sums == Stored(bytes, 16);
  }

  // A log is written anew from its beginning with other salts; what was there before stays behind it.
  bool IsOfThisLog(std::size_t frame) const {
    const std::string_view bytes = Frame(frame);
    return std::memcmp(bytes.data() + 8, salts_.data(), salts_.size()) == 0 &&
           NumberAt(bytes, 0) != 0;
  }

  bool IsSound(std::size_t frame) const {
    if (!IsOfThisLog(frame)) {
      return false;
    }
    if (frame == 0) {
      return headerIsSound_ && HasSumAfter(0, Stored(bytes_, 24));
    }
    return HasSumAfter(frame, Stored(Frame(frame - 1), 16));
  }

  bool HasPredecessor(std::size_t frame) const {
    return frame == 0 ? headerIsSound_ : IsOfThisLog(frame - 1);
  }

  void Take(std::size_t begin, std::size_t end, LogImages::Pages& pages) const {
    for (std::size_t i = begin; i < end; ++i) {
      // The second: with what its checksum goes on from lost, nothing more can be asked of a frame.
      if (IsSound(i) || (IsOfThisLog(i) && !HasPredecessor(i))) {
        pages[NumberAt(Frame(i), 0)] = Offset(i) + kFrameHeader;
      }
    }
  }

  // Behind the last commit from there on that can be read; the beginning where there is none.
  std::size_t EndOfCommits(std::size_t begin) const {
    for (std::size_t i = Count(); i > begin; --i) {
      if (NumberAt(Frame(i - 1), 4) != 0 && IsSound(i - 1)) {
        return i;
      }
    }
    return begin;
  }

  bool LooksLikePage(std::size_t frame) const {
    const auto kind = static_cast<unsigned char>(Frame(frame)[kFrameHeader]);
    return kind == 2 || kind == 5 || kind == 10 || kind == 13;
  }

  std::string_view bytes_;
  std::size_t pageSize_;
  bool headerIsSound_ = false;
  bool bigEndian_ = false;
  std::array<char, 8> salts_{};
};

}  // namespace

LogImages ReadLog(std::string_view log, std::size_t pageSize) {
  return log.size() <= kHeader + kFrameHeader ? LogImages() : Log(log, pageSize).Read();
}

}  // namespace DBStore::internal
