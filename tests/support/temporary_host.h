// A host of its own for a test.
#pragma once

#include "platform/host_paths.h"
#include "platform/host_setup.h"

#include "support/layout_1.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace TestSupport {

/// Whether the tests run once more, on stores that an older library made.
inline bool OnLayout1() {
  return std::getenv("TARN_TEST_LAYOUT_1") != nullptr;
}

/// A host root in a directory that is removed afterwards, with an empty store and schema store
/// unless the test wants to begin without. The root is the process's: one at a time.
class TemporaryHost {
 public:
  enum class Content { DATABASES, NOTHING };

  explicit TemporaryHost(Content content = Content::DATABASES)
      : previousRoot_(HostPaths::GetRoot()), root_(MakeDirectory()) {
    HostPaths::SetRoot(root_);
    if (content == Content::DATABASES) {
      const HostSetup::Result result = HostSetup::Initialize();
      if (!result.ok) {
        Leave();
        throw std::runtime_error(result.failure);
      }
      if (OnLayout1()) {
        MakeLayout1(Path(HostPaths::kStore));
      }
    }
  }
  ~TemporaryHost() { Leave(); }
  TemporaryHost(const TemporaryHost&) = delete;
  TemporaryHost& operator=(const TemporaryHost&) = delete;

  const std::string& Root() const { return root_; }
  /// A fixed path under the root.
  std::string Path(const char* fixedPath) const { return root_ + fixedPath; }

 private:
  static std::string MakeDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "tarn-host-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("cannot make a directory for the test: " + name);
    }
    return name;
  }
  void Leave() {
    HostPaths::SetRoot(previousRoot_);
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }

  std::string previousRoot_;
  std::string root_;
};

/// A file with this text, in the place of what was there; makes the directory it lies in.
inline void WriteFile(const std::string& path, const std::string& text) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::trunc) << text;
}

}  // namespace TestSupport
