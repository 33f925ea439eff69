#ifndef ORVEL_BENCH_SUPPORT_JSON_PASS_H
#define ORVEL_BENCH_SUPPORT_JSON_PASS_H

#include <cstddef>
#include <vector>

#include "orvel/analytics/text.h"

namespace Orvel::Bench {

/// The least that anything does which reads a JSON text with the engine and writes it again: UTF-16
/// to UTF-8, parse, write, and back, in memory that is there already.
class JsonPass {
  public:
    /// @param longest the length of the longest text, in code units.
    explicit JsonPass(std::size_t longest);

    /// @param text an object as JSON, well-formed.
    /// @return the written text, which the next pass overwrites; empty when the engine refused.
    WideStringView run(WideStringView text);

  private:
    std::vector<char> utf8_;
    std::vector<char> memory_;
    std::vector<WideChar> wide_;
};

}  // namespace Orvel::Bench

#endif
