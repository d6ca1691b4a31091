#include "UniquePath.h"

namespace cli {
namespace fs = std::filesystem;

fs::path uniquePath(const fs::path& path)
{
  std::error_code error;
  const fs::path result = fs::weakly_canonical(fs::absolute(path), error);
  const fs::path& best = error ? path : result;
  return best.has_filename() ? best : best.parent_path();
}

} // namespace cli
