#include "db/doctor/tree_pages.h"

#include "db/doctor/records.h"

#include <algorithm>
#include <string_view>

namespace DBStore::internal {
namespace {

using Kind = TreePage::Kind;

class Reader {
 public:
  Reader(const PageImages& images, std::uint32_t number, TreePage& page)
      : images_(images), page_(page), start_(number == 1 ? 100 : 0) {}

  bool Read(std::uint32_t number) {
    if (!images_.Read(number, image_)) {
      return false;
    }
    const auto kind = static_cast<unsigned char>(image_[start_]);
    if (kind != 2 && kind != 5 && kind != 10 && kind != 13) {
      return false;
    }
    page_.kind = static_cast<Kind>(kind);
    const std::size_t header = start_ + (page_.IsInner() ? 12U : 8U);
    const std::size_t count = Number(start_ + 3, 2);
    const std::size_t end = header + 2 * count;
    if (end > images_.Usable()) {
      return false;
    }
    if (page_.IsInner()) {
      page_.last = static_cast<std::uint32_t>(Number(start_ + 8, 4));
    }
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t at = Number(header + 2 * i, 2);
      TreeCell cell;
      if (at < end || at + 4 > images_.Usable() || !ReadCell(at, cell)) {
        page_.isDamaged = true;
      } else {
        page_.cells.push_back(std::move(cell));
      }
    }
    return true;
  }

 private:
  std::uint64_t Number(std::size_t offset, std::size_t bytes) const {
    return ReadBigEndian(std::string_view(image_).substr(offset), bytes);
  }

  bool ReadCell(std::size_t at, TreeCell& cell) {
    std::string_view rest = std::string_view(image_).substr(at, images_.Usable() - at);
    if (page_.IsInner()) {
      cell.child = static_cast<std::uint32_t>(ReadBigEndian(rest, 4));
      rest.remove_prefix(4);
    }
    std::uint64_t number = 0;
    if (page_.kind == Kind::INNER_TABLE) {
      return ReadVarint(rest, number);
    }
    std::uint64_t length = 0;
    if (!ReadVarint(rest, length)) {
      return false;
    }
    if (page_.kind == Kind::TABLE) {
      if (!ReadVarint(rest, number)) {
        return false;
      }
      cell.rowid = static_cast<std::int64_t>(number);
    }
    return ReadPayload(rest, length, cell);
  }

  // How much of a payload lies in its cell.
  std::size_t Local(std::uint64_t length) const {
    const std::size_t usable = images_.Usable();
    const std::size_t most =
        page_.kind == Kind::TABLE ? usable - 35 : (usable - 12) * 64 / 255 - 23;
    if (length <= most) {
      return static_cast<std::size_t>(length);
    }
    const std::size_t least = (usable - 12) * 32 / 255 - 23;
    const auto fitting = static_cast<std::size_t>(least + (length - least) % (usable - 4));
    return fitting <= most ? fitting : least;
  }

  bool ReadPayload(std::string_view rest, std::uint64_t length, TreeCell& cell) {
    if (length == 0 || length > std::uint64_t{images_.Count()} * images_.PageSize()) {
      return false;
    }
    const std::size_t local = Local(length);
    if (local > rest.size()) {
      return false;
    }
    cell.payload = rest.substr(0, local);
    if (local == length) {
      return true;
    }
    rest.remove_prefix(local);
    if (rest.size() < 4) {
      return false;
    }
    auto next = static_cast<std::uint32_t>(ReadBigEndian(rest, 4));
    std::string image;
    while (cell.payload.size() < length) {
      const bool isNew =
          std::find(page_.overflow.begin(), page_.overflow.end(), next) == page_.overflow.end();
      if (next < 2 || !isNew || !images_.Read(next, image)) {
        cell.isWhole = false;
        return true;
      }
      page_.overflow.push_back(next);
      const auto part = static_cast<std::size_t>(
          std::min<std::uint64_t>(length - cell.payload.size(), images_.Usable() - 4));
      cell.payload.append(image, 4, part);
      next = static_cast<std::uint32_t>(ReadBigEndian(image, 4));
    }
    // The last page of a payload names no other.
    cell.isWhole = next == 0;
    return true;
  }

  const PageImages& images_;
  TreePage& page_;
  const std::size_t start_;
  std::string image_;
};

}  // namespace

bool ReadTreePage(const PageImages& images, std::uint32_t number, TreePage& page) {
  page = TreePage();
  return Reader(images, number, page).Read(number);
}

}  // namespace DBStore::internal
