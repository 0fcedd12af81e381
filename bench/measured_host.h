// A host to measure on: a root directory of its own, with types and stored objects.
#pragma once

#include <cstddef>
#include <string>

namespace Benchmarks {

/// Makes a root under the current working directory, installs 2,000 types and fills the store; the
/// library's host root is set to it. Raises an exception when anything fails. Removes the root when
/// it goes.
class Host {
 public:
  Host();
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  const std::string& Root() const { return root_; }

  // Keys of the types.
  static constexpr const char* kPlain = "plain";      ///< one object, one value column filled
  static constexpr const char* kLayered = "layered";  ///< one object, all four filled
  static constexpr const char* kWritten = "written";  ///< for the Sets
  static constexpr const char* kStaged = "staged";    ///< one object that needs a reboot
  static constexpr const char* kStagedInstances = "staged-instances";  ///< the same, with instances
  static constexpr const char* kRewritten = "instances-rewritten";     ///< 10,000, each ten times
  static constexpr const char* kLarge = "large";                       ///< any members, and parts
  static constexpr const char* kMegabyte = "megabyte";                 ///< one object of 1 MB
  static constexpr const char* kBesideLarge = "instances-beside-large";  ///< kNeighbours and 4 MB
  static constexpr const char* kWithoutLarge = "instances-without";      ///< the same without
  static constexpr std::size_t kNeighbours = 10000;
  static constexpr std::size_t kMany = 100000;
  /// A type with so many instances: 10, 1,000, 10,000 or kMany.
  static std::string KeyOfInstances(std::size_t count);
  /// The same for the writes; of kMany there are none yet.
  static std::string KeyOfWrittenInstances(std::size_t count);

 private:
  void WriteAllowlist() const;
  void InstallAllTypes() const;
  void FillStore() const;

  std::string root_;
};

}  // namespace Benchmarks
