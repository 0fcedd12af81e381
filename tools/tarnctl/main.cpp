#include "arguments.h"

#include <csignal>
#include <fcntl.h>

namespace {

// A standard descriptor that came closed would be given to the next file or socket that is opened,
// and data printed into it. Opened the wrong way round, it fails whoever uses it.
void OccupyStandardDescriptors() {
  for (int descriptor = 0; descriptor <= 2; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) == -1) {
      ::open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY);
    }
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  OccupyStandardDescriptors();
  std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is a failure to write, with its exit code
  return tarnctl::Run(argumentCount, arguments);
}
