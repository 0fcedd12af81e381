#include "table/table.h"

#include "json/print.h"
#include "json/utf8.h"
#include "table/text_width.h"

#include <algorithm>
#include <numeric>
#include <unistd.h>
#include <utility>

namespace tarnctl {
namespace {

constexpr std::size_t kGap = 2;

std::size_t Sum(const std::vector<std::size_t>& widths) {
  return std::accumulate(widths.begin(), widths.end(), (widths.size() - 1) * kGap);
}

}  // namespace

Table::Table(const Output& output, std::vector<std::string> headings)
    : output_(output), terminal_(Terminal::Of(STDOUT_FILENO)), widths_(headings.size()) {
  if (terminal_.isOne) {
    Add(std::move(headings), kBold);
  }
}

void Table::Add(std::vector<std::string> cells, const char* colour) {
  constexpr std::size_t kMuch = 65536;
  if (terminal_.isOne) {
    std::transform(
        cells.begin(), cells.end(), widths_.begin(), widths_.begin(),
        [](const std::string& cell, std::size_t width) { return std::max(width, WidthOf(cell)); });
    rows_.push_back({std::move(cells), colour});
    return;
  }
  for (std::size_t i = 0; i < cells.size(); ++i) {
    lines_.append(i == 0 ? "" : "\t").append(cells[i]);
  }
  lines_ += '\n';
  if (lines_.size() > kMuch) {
    output_.PrintText(lines_);
    lines_.clear();
  }
}

void Table::End() {
  const std::vector<std::size_t> widths = FittingWidths();
  for (const Row& row : rows_) {
    lines_ += LineOf(row, widths);
  }
  output_.PrintText(lines_);
}

bool Table::Fits() const {
  return !terminal_.isOne || Sum(widths_) <= terminal_.width;
}

// Takes from the widest columns first. What is left too wide then is for the terminal to wrap.
std::vector<std::size_t> Table::FittingWidths() const {
  constexpr std::size_t kNarrowest = 8;
  std::vector<std::size_t> widths = widths_;
  if (Fits() || widths.size() < 2) {
    return widths;
  }
  for (auto width = widths.begin() + 1; width != widths.end(); ++width) {
    *width = std::min(*width, terminal_.width);  // values may have any length
  }
  while (Sum(widths) > terminal_.width) {
    const auto widest = std::max_element(widths.begin() + 1, widths.end());
    if (*widest <= kNarrowest) {
      break;
    }
    --*widest;
  }
  return widths;
}

std::string Table::LineOf(const Row& row, const std::vector<std::size_t>& widths) const {
  std::string line;
  std::size_t gap = 0;  // wanted before the next cell that is not empty
  for (std::size_t i = 0; i < row.cells.size(); ++i) {
    const std::string cell = i == 0 ? row.cells[i] : CutTo(widths[i], row.cells[i]);
    if (!cell.empty()) {
      line.append(gap, ' ').append(terminal_.Coloured(cell, row.colour));
      gap = 0;
    }
    gap += widths[i] - std::min(widths[i], WidthOf(cell)) + kGap;
  }
  return line + "\n";
}

std::string CellOf(const Json::Value& value) {
  if (value.IsString()) {
    return Json::Utf8::Escaped(Json::Text(value));
  }
  std::string text;
  Json::Print(value, Json::Layout::ONE_LINE, Json::BadText::REPAIRED, text);
  return Json::Utf8::WithoutControls(text);
}

}  // namespace tarnctl
