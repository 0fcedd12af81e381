#include "db/doctor/row_walk.h"

#include "db/doctor/tree_pages.h"

#include <algorithm>
#include <map>
#include <utility>

namespace DBStore::internal {
namespace {

using Type = Field::Type;

bool Fits(const Field& field, const ColumnShape& column) {
  if (column.type == "TEXT") {
    return field.type == Type::TEXT || (field.type == Type::NONE && !column.notNull);
  }
  return column.type != "INTEGER" || field.type == Type::INTEGER ||
         (field.type == Type::NONE && !column.notNull);
}

bool HasShape(const std::vector<Field>& fields, const TableShape& shape) {
  const std::vector<std::size_t> order = shape.RecordOrder();
  // A table of numbers alone looks like too many other things.
  if (fields.size() != order.size() || shape.RowidColumn()) {
    return false;
  }
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (!Fits(fields[i], shape.columns[order[i]])) {
      return false;
    }
  }
  return true;
}

class Walk {
 public:
  Walk(const PageImages& images, const std::vector<TableShape>& expected)
      : images_(images), seen_(std::size_t{images.Count()} + 1) {
    for (const TableShape& shape : expected) {
      shapes_.push_back(std::make_shared<TableShape>(shape));
    }
  }

  FoundRows Run() {
    if (images_.HasHeader()) {
      FollowSchema();
      MarkFree();
    }
    for (std::uint32_t page = 2; page <= images_.Count(); ++page) {
      if (!seen_[page]) {
        LookAtStray(page);
      }
    }
    return std::move(found_);
  }

 private:
  struct Entry {
    std::string type;
    std::string table;
    std::string sql;
    std::uint32_t root = 0;
  };

  template <class Visit>
  void FollowTree(std::uint32_t root, bool isIndex, const Visit& visit) {
    std::vector<std::uint32_t> pages = {root};
    while (!pages.empty()) {
      const std::uint32_t number = pages.back();
      pages.pop_back();
      TreePage page;
      const bool isNew = number > 0 && number < seen_.size() && !seen_[number];
      if (!isNew || !ReadTreePage(images_, number, page) || page.IsOfIndex() != isIndex) {
        ++found_.unreadable;
        continue;
      }
      seen_[number] = true;
      NotePage(page);
      for (const TreeCell& cell : page.cells) {
        if (!cell.payload.empty()) {
          visit(cell);
        }
        if (page.IsInner()) {
          pages.push_back(cell.child);
        }
      }
      if (page.IsInner()) {
        pages.push_back(page.last);
      }
    }
  }

  void NotePage(const TreePage& page) {
    found_.unreadable += page.isDamaged ? 1U : 0U;
    for (const std::uint32_t overflow : page.overflow) {
      seen_[overflow] = true;
    }
  }

  void FollowSchema() {
    std::vector<Entry> entries;
    FollowTree(1, false, [&entries](const TreeCell& cell) {
      std::vector<Field> fields;
      if (ReadRecord(cell.payload, fields) && fields.size() == 5) {
        entries.push_back({fields[0].bytes, fields[2].bytes, fields[4].bytes,
                           static_cast<std::uint32_t>(fields[3].integer)});
      }
    });
    // A page that two trees claim belongs to the first: tables before what only leads to their rows.
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
      return (a.type == "table") > (b.type == "table");
    });
    for (const Entry& entry : entries) {
      if (entry.root == 0) {
        continue;
      }
      if (entry.type == "index") {
        FollowIndex(entry);
      } else {
        FollowTable(entry);
      }
    }
  }

  void FollowTable(const Entry& entry) {
    const std::optional<TableShape> shape = ShapeOf(entry.sql);
    const auto shared = shape ? std::make_shared<const TableShape>(*shape) : nullptr;
    FollowTree(entry.root, shape && shape->withoutRowid, [&](const TreeCell& cell) {
      FoundRow row{shared, entry.table, cell.rowid, {}, true, cell.isWhole};
      if (cell.isWhole ? ReadRecord(cell.payload, row.fields)
                       : ReadCutRecord(cell.payload, row.fields)) {
        if (shape && row.fields.size() != shape->columns.size()) {
          row.shape = nullptr;
        }
        found_.rows.push_back(std::move(row));
      } else {
        ++found_.unreadable;
      }
    });
  }

  // It has nothing that its table has not.
  void FollowIndex(const Entry& entry) {
    const std::size_t before = found_.unreadable;
    FollowTree(entry.root, true, [&](const TreeCell& cell) {
      std::vector<Field> fields;
      if (ReadRecord(cell.payload, fields) && fields.size() > 1) {
        fields.pop_back();  // the row's number
        found_.keys.push_back({entry.table, std::move(fields)});
      }
    });
    found_.unreadable = before;
  }

  // Each page of the list names the next one and those that it holds
  // (https://sqlite.org/fileformat2.html#the_freelist).
  void MarkFree() {
    std::string image;
    std::uint32_t next = 0;
    if (images_.Read(1, image)) {
      next = static_cast<std::uint32_t>(ReadBigEndian(std::string_view(image).substr(32), 4));
    }
    while (next > 1 && next < seen_.size() && !seen_[next] && images_.Read(next, image)) {
      seen_[next] = true;
      const std::string_view trunk = image;
      const std::uint64_t count = ReadBigEndian(trunk.substr(4), 4);
      for (std::uint64_t i = 0; i < count && 12 + 4 * i <= images_.Usable(); ++i) {
        const std::uint64_t leaf = ReadBigEndian(trunk.substr(8 + 4 * i), 4);
        if (leaf > 1 && leaf < seen_.size()) {
          seen_[leaf] = true;
        }
      }
      next = static_cast<std::uint32_t>(ReadBigEndian(trunk, 4));
    }
  }

  void LookAtStray(std::uint32_t number) {
    TreePage page;
    if (!ReadTreePage(images_, number, page)) {
      return;
    }
    for (const TreeCell& cell : page.cells) {
      FoundRow row;
      row.rowid = cell.rowid;
      row.isWhole = cell.isWhole;
      if (!cell.isWhole || !ReadRecord(cell.payload, row.fields)) {
        row.isWhole = false;
        if (cell.payload.empty() || !ReadCutRecord(cell.payload, row.fields)) {
          continue;
        }
      }
      if (NameByShape(row)) {
        found_.rows.push_back(std::move(row));
      }
    }
  }

  bool NameByShape(FoundRow& row) const {
    for (const auto& shape : shapes_) {
      if (HasShape(row.fields, *shape)) {
        row.shape = row.table.empty() ? shape : nullptr;
        row.table += (row.table.empty() ? "" : " or ") + shape->name;
      }
    }
    return !row.table.empty();
  }

  const PageImages& images_;
  std::vector<std::shared_ptr<const TableShape>> shapes_;
  std::vector<bool> seen_;
  FoundRows found_;
};

}  // namespace

FoundRows WalkRows(const PageImages& images, const std::vector<TableShape>& expected) {
  return Walk(images, expected).Run();
}

}  // namespace DBStore::internal
