#pragma once
// CheckProgram: the whole of pelorin-check behind main(): parses the
// arguments, checks every file in order and returns the exit status:
// 0 clean, 1 warnings under --strict, 2 errors or unusable arguments (then
// with one line on `err`). The report goes to `out`. One thread.

#include <ostream>
#include <string>
#include <vector>

namespace PelorinCheck {

class CheckProgram {
 public:
  static constexpr int kClean = 0;
  static constexpr int kWarnings = 1;
  static constexpr int kErrors = 2;

  // `arguments` without the program name.
  static int Run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);
};

}  // namespace PelorinCheck
