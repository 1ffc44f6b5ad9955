#include "rlxdump/compare_jobs.h"

#include <optional>
#include <vector>

#include "rlxdump/differences.h"
#include "rlxdump/job_sections.h"

namespace rlx::dump {

namespace {

constexpr std::size_t kPieceWidth = 6;
constexpr std::size_t kOffsetWidth = 10;

using MaybeSection = std::optional<SectionPieces>;

std::vector<std::string> identities(const MaybeSection& section) {
  std::vector<std::string> all;
  if (section) {
    for (const Piece& piece : section->pieces) {
      all.push_back(piece.identity);
    }
  }
  return all;
}

bool is_page(const MaybeSection& section) {
  return section && section->section.kind == reader::Section::Kind::page;
}

bool same_section(const MaybeSection& left, const MaybeSection& right) {
  return left && right && title_of(left->section) == title_of(right->section);
}

/// True when a section is a page that the other side does not have, or has later.
bool stands_alone(const MaybeSection& section, const MaybeSection& other) {
  return is_page(section) && (!is_page(other) || section->section.page < other->section.page);
}

class Comparison {
 public:
  Comparison(const NamedInput& first, const NamedInput& second, Output& output,
             const Painter& painter)
      : first_(first),
        second_(second),
        firsts_(first.input),
        seconds_(second.input),
        output_(output),
        painter_(painter) {}

  bool run() {
    MaybeSection left = firsts_.next();
    MaybeSection right = seconds_.next();
    while (left || right) {
      const bool take_left = !stands_alone(right, left);
      const bool take_right = !stands_alone(left, right);
      compare(take_left ? left : std::nullopt, take_right ? right : std::nullopt);
      left = take_left ? firsts_.next() : std::move(left);
      right = take_right ? seconds_.next() : std::move(right);
    }
    return same_;
  }

 private:
  void compare(const MaybeSection& left, const MaybeSection& right) {
    bool titled = false;
    for (const Step& step : shortest_way(identities(left), identities(right))) {
      if (step.kind == Step::Kind::same) {
        continue;
      }
      if (!titled) {
        out_title(left, right);
        titled = true;
      }
      const bool removed = step.kind == Step::Kind::removed;
      out_piece(removed ? '-' : '+', removed ? *left : *right, removed ? step.from : step.to);
    }
  }

  void out_title(const MaybeSection& left, const MaybeSection& right) {
    if (same_) {
      output_.put(painter_.paint(Look::bold, "--- " + first_.name) + '\n');
      output_.put(painter_.paint(Look::bold, "+++ " + second_.name) + '\n');
      same_ = false;
    }
    std::string title = title_of((left ? left : right)->section);
    if (left && right && !same_section(left, right)) {
      title += " / " + title_of(right->section);
    }
    output_.put(painter_.paint(Look::title, "== " + title) + '\n');
  }

  void out_piece(char sign, const SectionPieces& section, std::size_t index) {
    const Piece& piece = section.pieces[index];
    output_.put(painter_.paint(sign == '-' ? Look::bad : Look::good,
                               std::string(1, sign) + " piece " +
                                   right(std::to_string(section.first_piece + index), kPieceWidth) +
                                   "  at " + right(std::to_string(piece.offset), kOffsetWidth) +
                                   "  " + piece.shown) +
                '\n');
  }

  const NamedInput& first_;
  const NamedInput& second_;
  JobSections firsts_;
  JobSections seconds_;
  Output& output_;
  const Painter& painter_;
  bool same_ = true;
};

}  // namespace

bool compare_jobs(const NamedInput& first, const NamedInput& second, Output& output,
                  const Painter& painter) {
  return Comparison(first, second, output, painter).run();
}

}  // namespace rlx::dump
