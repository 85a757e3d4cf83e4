#include "unit.h"

#include <doctest.h>

#include "support/table.h"

namespace {

constexpr wchar_t kTable[] = L"table";

const std::vector<Row>& AllRows() {
  static const std::vector<Row> rows = ReadTable("unit/rows.txt", 2, 3);
  return rows;
}

}  // namespace

void CheckRows(const std::string& name, std::wstring (*function)(std::wstring_view)) {
  CAPTURE(name);
  unsigned rows = 0;
  bool here = false;
  for (const Row& row : AllRows()) {
    INFO("row ", Literal(row[0]));
    REQUIRE(row.size() == (row[0] == kTable ? 3 : 2));
    if (row[0] == kTable) {
      here = Literal(row[1]) == name;
    } else if (here) {
      CHECK(Literal(function(row[0])) == Literal(row[1]));
      ++rows;
    }
  }
  REQUIRE(rows > 0);
}

std::set<std::string> TableNames() {
  std::set<std::string> names;
  for (const Row& row : AllRows()) {
    if (row[0] == kTable) names.insert(Literal(row[1]));
  }
  return names;
}
