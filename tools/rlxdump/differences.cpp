#include "rlxdump/differences.h"

#include <algorithm>
#include <cstdint>

namespace rlx::dump {

namespace {

using Strings = std::vector<std::string>;

/// Steps that are searched for, removed and added ones together. Time and memory grow with its
/// square.
constexpr std::ptrdiff_t kMostSteps = 1000;

/// The part of two lists between their common front and their common end.
class Middle {
 public:
  Middle(const Strings& from, const Strings& to) : from_(from), to_(to) {
    const std::size_t most = std::min(from.size(), to.size());
    while (front_ < most && from[front_] == to[front_]) {
      ++front_;
    }
    while (end_ < most - front_ && from[from.size() - 1 - end_] == to[to.size() - 1 - end_]) {
      ++end_;
    }
  }

  std::ptrdiff_t from_count() const { return count(from_); }
  std::ptrdiff_t to_count() const { return count(to_); }
  std::size_t front() const { return front_; }
  std::size_t end() const { return end_; }

  bool equal(std::ptrdiff_t x, std::ptrdiff_t y) const {
    return from_[front_ + static_cast<std::size_t>(x)] == to_[front_ + static_cast<std::size_t>(y)];
  }

 private:
  std::ptrdiff_t count(const Strings& list) const {
    return static_cast<std::ptrdiff_t>(list.size() - front_ - end_);
  }

  const Strings& from_;
  const Strings& to_;
  std::size_t front_ = 0;
  std::size_t end_ = 0;
};

/// The greedy search: for each number of steps how far along `from` each diagonal x - y gets. Its
/// rounds are kept to find the way back.
class Search {
 public:
  explicit Search(const Middle& middle) : middle_(middle) {}

  /// @return false when the way is too long.
  bool run() {
    for (std::ptrdiff_t steps = 0; steps <= kMostSteps; ++steps) {
      rounds_.emplace_back(static_cast<std::size_t>(2 * steps + 1));
      for (std::ptrdiff_t diagonal = -steps; diagonal <= steps; diagonal += 2) {
        if (advance(steps, diagonal)) {
          end_diagonal_ = diagonal;
          return true;
        }
      }
    }
    return false;
  }

  /// The steps, last one first, with positions in the middle.
  std::vector<Step> way_back() const {
    std::vector<Step> way;
    std::ptrdiff_t x = middle_.from_count();
    std::ptrdiff_t y = middle_.to_count();
    auto steps = static_cast<std::ptrdiff_t>(rounds_.size()) - 1;
    for (std::ptrdiff_t diagonal = end_diagonal_; x > 0 || y > 0; --steps) {
      const bool add = adds(steps, diagonal);
      const std::ptrdiff_t before = add ? diagonal + 1 : diagonal - 1;
      const std::ptrdiff_t start_x = steps == 0 ? 0 : at(steps - 1, before) + (add ? 0 : 1);
      for (; x > start_x; --x, --y) {
        way.push_back({Step::Kind::same, index(x - 1), index(y - 1)});
      }
      if (steps == 0) {
        break;
      }
      way.push_back({add ? Step::Kind::added : Step::Kind::removed, index(add ? x : x - 1),
                     index(add ? y - 1 : y)});
      (add ? y : x) -= 1;
      diagonal = before;
    }
    return way;
  }

 private:
  static std::size_t index(std::ptrdiff_t position) { return static_cast<std::size_t>(position); }

  /// How far along `from` a round came on a diagonal; -1 when it was not there.
  std::ptrdiff_t at(std::ptrdiff_t steps, std::ptrdiff_t diagonal) const {
    const bool inside = steps >= 0 && diagonal >= -steps && diagonal <= steps;
    return inside ? rounds_[index(steps)][index(diagonal + steps)] : -1;
  }

  /// True when a diagonal is best reached by adding.
  bool adds(std::ptrdiff_t steps, std::ptrdiff_t diagonal) const {
    return diagonal == -steps ||
           (diagonal != steps && at(steps - 1, diagonal - 1) < at(steps - 1, diagonal + 1));
  }

  /// @return true at the end of both lists.
  bool advance(std::ptrdiff_t steps, std::ptrdiff_t diagonal) {
    std::ptrdiff_t x = 0;
    if (steps != 0) {
      x = adds(steps, diagonal) ? at(steps - 1, diagonal + 1) : at(steps - 1, diagonal - 1) + 1;
    }
    while (x < middle_.from_count() && x - diagonal < middle_.to_count() &&
           middle_.equal(x, x - diagonal)) {
      ++x;
    }
    rounds_.back()[index(diagonal + steps)] = x;
    return x >= middle_.from_count() && x - diagonal >= middle_.to_count();
  }

  const Middle& middle_;
  std::vector<std::vector<std::ptrdiff_t>> rounds_;
  std::ptrdiff_t end_diagonal_ = 0;
};

void add_same(std::vector<Step>& way, std::size_t from, std::size_t to, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    way.push_back({Step::Kind::same, from + i, to + i});
  }
}

/// All of the one middle out, all of the other in.
void add_all_different(std::vector<Step>& way, const Middle& middle) {
  const std::size_t front = middle.front();
  for (std::ptrdiff_t i = 0; i < middle.from_count(); ++i) {
    way.push_back({Step::Kind::removed, front + static_cast<std::size_t>(i), front});
  }
  for (std::ptrdiff_t i = 0; i < middle.to_count(); ++i) {
    way.push_back({Step::Kind::added, front, front + static_cast<std::size_t>(i)});
  }
}

}  // namespace

std::vector<Step> shortest_way(const Strings& from, const Strings& to) {
  const Middle middle(from, to);
  std::vector<Step> way;
  add_same(way, 0, 0, middle.front());
  Search search(middle);
  if (search.run()) {
    std::vector<Step> back = search.way_back();
    std::reverse(back.begin(), back.end());
    for (const Step& step : back) {
      way.push_back({step.kind, step.from + middle.front(), step.to + middle.front()});
    }
  } else {
    add_all_different(way, middle);
  }
  add_same(way, from.size() - middle.end(), to.size() - middle.end(), middle.end());
  return way;
}

}  // namespace rlx::dump
