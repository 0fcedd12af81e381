// What a disk may hold after the power was lost.
#pragma once

#include "durability/recorded_disk.h"

#include <cstddef>
#include <functional>
#include <random>

namespace Durability {

/// Gets the files as they may be found, and how many promises had been made by then.
using ImageVisitor = std::function<void(const Files& files, std::size_t promises)>;

/// Visits images of the disk: of each moment, one with all that was done by then, one with what was synced
/// alone, and some with any part of the rest: whole, torn in sectors of 512 bytes, or missing, in any
/// order. What was synced is always there.
/// \param torn  how many of the latter for each moment
void ForEachImage(const RecordedDisk& disk, unsigned torn, std::mt19937& random,
                  const ImageVisitor& visit);

}  // namespace Durability
