#include "unit.h"
#include "update/pack_list.h"
#include "update/record_text.h"
#include "update/request_path.h"
#include "update/section_names.h"

TEST_CASE("the newest pack is not found, or a list without one changes the result") {
  const auto newest = [](std::wstring_view sections) {
    LatestPack latest{4, 4};
    FindLatestPack(Split(sections), latest);
    return std::to_wstring(latest.level) + L'.' + std::to_wstring(latest.build);
  };
  CheckRows({L"Update Packs for Versions|Varnexa15_0_1_12|Varnexa15_0_2_3|Varnexa15_0_2_7 => 2.7",
             L"H|P_1_99|P_2_1 => 2.1", L"H|P_2_7|P_2_3|P_1_8 => 2.7", L"H|P_2_9|P_2_10 => 2.10",
             L"H|P_9_1|P_10_1 => 10.1", L"P_9_9|P_1_1|P_1_2 => 1.2",
             L"H|P_99999999999_1|P_2_2 => 2147483647.1", L"H|P_ +2_ 3x|P_1_1 => 2.3"},
            newest);
  // Several packs, a best level or build below 1: 4.4 stays. A single pack is taken as it is.
  CheckRows({L"H|P_0_5|P_0_7 => 4.4", L"H|P_5_0|P_4_9 => 4.4", L"H|P_-1_5|P_x_y => 4.4",
             L"H|P_1_-5|P_1_-9 => 4.4", L"H|P_1_2 => 1.2", L"H|P_0_0 => 0.0", L"H|P_-1_-2 => -1.-2",
             L"H|Pack_7 => 4.7", L"H|Pack_ => 4.0", L"H|Pack => 4.4"},
            newest);
  // A name with a single underscore has the level of the pack before it; one without any is no pack.
  CheckRows({L"H|P_2_1|P_9 => 2.9", L"H|P_9|P_2_1 => 2.1", L"H|P_9|Q_8 => 4.4", L"H|P_3_1|P_1_1|P_8 => 3.1",
             L"H|P_1_2|noise|P_1_3 => 1.3", L"H|noise|P_1_3 => 1.3", L"H|noise|P_0_3 => 4.4",
             L"H|_|__|P_1_1 => 1.1", L"H => 4.4", L" => 4.4"},
            newest);
}

TEST_CASE("a newer pack is taken for an older one") {
  const std::int32_t older[][2] = {{2, 6}, {1, 99}, {-1, 7}}, not_older[][2] = {{2, 7}, {2, 8}, {3, 0}};
  for (const auto& installed : older) CHECK(IsNewer({2, 7}, installed[0], installed[1]));
  for (const auto& installed : not_older) CHECK_FALSE(IsNewer({2, 7}, installed[0], installed[1]));
}

TEST_CASE("a recorded pack is not recognised, or a heading counts as one") {
  // The record, then the list.
  CheckRows({L"A_1_2;A_1_1|H|A_1_1|A_1_2 => 2", L"H A_1_2|H|A_1_1|A_1_2 => 1", L"xA_1_12|H|A_1_1 => 1",
             L"a_1_1|H|A_1_1 => 0", L"A_1_1|H|A_1_1|A_1_1 => 2", L"|H|A_1_1 => 0", L"H|H => 0", L"H => 0"},
            [](std::wstring_view in) {
              std::vector<std::wstring> parts = Split(in);
              const std::wstring record = parts.front();
              parts.erase(parts.begin());
              return std::to_wstring(CountRecordedPacks(parts, record));
            });
}

TEST_CASE("a record's version is misread, or read where there is none") {
  CheckRows(
      {L"Varnexa15_0_2_7 => 15027", L"varnexa15_0_2_7 => 15027", L"Pack: Varnexa 15_0_0_36 done => 15036",
       L"varnexa1 Varnexa15_0_2_7 => 15027", L"Varnexa Varnexa15_0_2_7 => 27", L"Varnexa___ => 0",
       L"Varnexa99999999999_0_0_0 => 2147483647", L"VARNEXA15_0_2_7 => none", L"15_0_2_7 => none",
       L"Varnexa15_0_2 => none", L"Varnexa15_0_2_7_1 => none", L"Varnexa15_0_2_7 Varnexa15_0_2_8 => none",
       L"My_Varnexa15_0_2 => none", L"1_2_3_Varnexa => none", L" => none"},
      [](std::wstring_view record) {
        const auto version = ParseRecordVersion(record);
        return version ? std::to_wstring(*version) : L"none";
      });
}

TEST_CASE("the request asks for another file than the registered one") {
  CheckRows({L"http://up.example/qrt/15/updates.ini => qrt/15/updates.ini",
             L"up.example/up.example/x => up.example/x", L"up.example//x => /x",
             L"http://up.example:80/x => 80/x", L"http://up.example/ => ", L"http://up.example => ",
             L"http://UP.example/x => none", L"http://up.exampl => none", L" => none"},
            [](std::wstring_view address) { return RequestPath(address, L"up.example").value_or(L"none"); });
}

TEST_CASE("a section name is lost at the buffer's end, or a cut one is kept") {
  const std::wstring longest(1023, L'x');
  CheckRows({L"H\0P_1_1\0\0 => H|P_1_1|"sv, L"H\0P_1_1\0 => H|P_1_1|"sv, L"H\0P_1_ => H|"sv, L"P => ",
             L"H\0\0P_1_1\0\0 => H|"sv, L"\0H\0 => "sv, L"\0 => "sv, L" => ",
             longest + L"\0 => "s + longest + L'|', L"a\0"s + longest + L" => a|"},
            [](std::wstring_view buffer) {
              std::vector<std::wstring> names{L"before"};
              AppendSectionNames(buffer, names);
              REQUIRE(names.front() == L"before");
              std::wstring joined;
              for (std::size_t i = 1; i < names.size(); ++i) joined.append(names[i]).append(L"|");
              return joined;
            });
}
