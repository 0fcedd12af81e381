#include "durability/lost_power.h"

#include <algorithm>
#include <set>

namespace Durability {
namespace {

constexpr std::size_t kSector = 512;

void Put(std::string& file, std::size_t offset, std::string_view bytes) {
  if (file.size() < offset + bytes.size()) {
    file.resize(offset + bytes.size());  // a hole reads as zeros
  }
  file.replace(offset, bytes.size(), bytes);
}

void Apply(const DiskEvent& event, Files& files) {
  const auto offset = static_cast<std::size_t>(event.offset);
  switch (event.kind) {
    case DiskEvent::Kind::WRITE:
      Put(files[event.file], offset, event.bytes);
      break;
    case DiskEvent::Kind::TRUNCATE:
      files[event.file].resize(offset);
      break;
    case DiskEvent::Kind::REMOVE:
      files.erase(event.file);
      break;
    case DiskEvent::Kind::SYNC:
    case DiskEvent::Kind::PROMISE:
      break;
  }
}

// Some sectors of a write reach the disk.
void Tear(const DiskEvent& event, std::mt19937& random, Files& files) {
  const auto begin = static_cast<std::size_t>(event.offset);
  for (std::size_t done = 0; done < event.bytes.size();) {
    const std::size_t end =
        std::min(((begin + done) / kSector + 1) * kSector - begin, event.bytes.size());
    if (random() % 2 == 0) {
      Put(files[event.file], begin + done, std::string_view(event.bytes).substr(done, end - done));
    }
    done = end;
  }
}

void ApplySomeOf(const std::vector<const DiskEvent*>& events, std::mt19937& random, Files& files) {
  for (const DiskEvent* event : events) {
    const bool isWrite = event->kind == DiskEvent::Kind::WRITE;
    switch (random() % (isWrite ? 3 : 2)) {
      case 0:
        Apply(*event, files);
        break;
      case 2:
        Tear(*event, random, files);
        break;
      default:
        break;
    }
  }
}

}  // namespace

void ForEachImage(const RecordedDisk& disk, unsigned torn, std::mt19937& random,
                  const ImageVisitor& visit) {
  Files safe = disk.Before();
  std::vector<const DiskEvent*> unsafe;
  std::size_t promises = 0;
  visit(safe, promises);
  for (const DiskEvent& event : disk.Events()) {
    if (event.kind == DiskEvent::Kind::PROMISE) {
      ++promises;
    } else if (event.kind != DiskEvent::Kind::SYNC) {
      unsafe.push_back(&event);
    } else {
      for (auto each = unsafe.begin(); each != unsafe.end();) {
        if ((*each)->file == event.file) {
          Apply(**each, safe);
          each = unsafe.erase(each);
        } else {
          ++each;
        }
      }
    }
    if (event.kind == DiskEvent::Kind::SYNC || event.kind == DiskEvent::Kind::PROMISE) {
      visit(safe, promises);
    }
    if (unsafe.empty()) {
      continue;
    }
    Files all = safe;
    for (const DiskEvent* each : unsafe) {
      Apply(*each, all);
    }
    visit(all, promises);
    for (unsigned i = 0; i < torn; ++i) {
      Files some = safe;
      ApplySomeOf(unsafe, random, some);
      visit(some, promises);
    }
  }
}

}  // namespace Durability
