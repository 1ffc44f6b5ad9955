#include "rlxproof/paper.h"

#include <array>

namespace rlx::proof {

namespace {

constexpr double millimetres(double length) {
  return length * kPointsPerInch / 25.4;
}

struct PaperRow {
  std::uint64_t series;
  std::uint64_t size;
  Paper paper;
};

constexpr std::array<PaperRow, 6> kPapers{{
    {0, 4, {"A4", millimetres(210), millimetres(297)}},
    {0, 3, {"A3", millimetres(297), millimetres(420)}},
    {0, 5, {"A5", millimetres(148), millimetres(210)}},
    {1, 4, {"JIS B4", millimetres(257), millimetres(364)}},
    {1, 5, {"JIS B5", millimetres(182), millimetres(257)}},
    {3, 4, {"letter", 8.5 * kPointsPerInch, 11 * kPointsPerInch}},
}};

}  // namespace

const Paper& default_paper() {
  return kPapers.front().paper;
}

const Paper* find_paper(std::uint64_t series, std::uint64_t size) {
  for (const PaperRow& row : kPapers) {
    if (row.series == series && row.size == size) {
      return &row.paper;
    }
  }
  return nullptr;
}

}  // namespace rlx::proof
