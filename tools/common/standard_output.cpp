#include "tools/common/standard_output.h"

#include <unistd.h>

namespace tools {

FILE* takeStandardOutput() {
  int own = dup(STDOUT_FILENO);
  fflush(stdout);
  if (own == -1 || dup2(STDERR_FILENO, STDOUT_FILENO) == -1) return stdout;
  FILE* stream = fdopen(own, "w");
  return stream ? stream : stdout;
}

}  // namespace tools
