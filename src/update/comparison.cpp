#include <windows.h>

#include "log/log_texts.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "text/text.h"
#include "update/record_text.h"
#include "update/update_engine.h"
#include "update/update_texts.h"

namespace {

constexpr std::wstring_view kRecordFile = L"\\installedupdates.dat";
/// A record names a few packs in a few hundred bytes; a larger file is no record and counts as unreadable.
constexpr std::size_t kRecordLimit = 64 * 1024 * 1024;
/// A list that holds a pack has its heading section and at least one more.
constexpr std::size_t kHeadingAndPack = 2;

// Which log line says that a path was taken.
constexpr std::size_t kWithRecord = 1;
constexpr std::size_t kEmptyRecordOrList = 2;
constexpr std::size_t kWithoutRecord = 3;

}  // namespace

void UpdateEngine::CompareUpdates(const std::wstring& productIconPath,
                                  const std::wstring& /*productVersion*/) {
  ReadProductVersionNumber();
  UpdateSections.clear();
  const std::wstring record =
      std::wstring(text::SplitAtLastBackslash(productIconPath).folder).append(kRecordFile);
  // An update that runs beside this check may write the record during the exchange.
  const bool has_record = platform::FileExists(record);
  DownloadUpdateList(UpdateSections);
  if (UpdateSections.size() >= kHeadingAndPack) FindLatestPack();
  if (has_record) {
    CompareWithRecord(record);
  } else {
    CompareWithoutRecord();
  }
}

void UpdateEngine::FindLatestPack() {
  LatestPack latest{LatestLevel, LatestBuild};
  ::FindLatestPack(UpdateSections, latest);
  LatestLevel = latest.level;
  LatestBuild = latest.build;
}

void UpdateEngine::ReadRecordVersion(std::wstring_view text) {
  RecordVersionNumber = ParseRecordVersion(text).value_or(RecordVersionNumber);
}

std::wstring UpdateEngine::ReadInstalledRecord(const std::wstring& path) {
  const auto bytes = platform::ReadWholeFile(path, kRecordLimit);
  if (!bytes) {
    log().Append(platform::SystemMessage(GetLastError()));
    log().Append(update_texts::kRecordReadFailed);
    return {};
  }
  log().Append(update_texts::kRecordRead);
  return platform::FromAnsi(*bytes);
}

UpdateEngine::NewerPack UpdateEngine::TestNewerPack() const {
  if (ProductVersionThird.empty() || ProductVersionFourth.empty()) return NewerPack::unknown;
  const bool newer = IsNewer({LatestLevel, LatestBuild}, text::ParseDecimal(ProductVersionThird),
                             text::ParseDecimal(ProductVersionFourth));
  return newer ? NewerPack::exists : NewerPack::none;
}

void UpdateEngine::SetUpdatesAvailable(bool available) {
  m_bUpdatesAvailable = available;
  if (variant_.updates_available_mirror != nullptr) *variant_.updates_available_mirror = available;
}

void UpdateEngine::ReportFound(std::size_t exit_code) {
  SetUpdatesAvailable(true);
  log().Append(update_texts::kDetailsFound[exit_code]);
}

void UpdateEngine::ReportNotFound(std::size_t exit_code, bool matching) {
  SetUpdatesAvailable(false);
  log().Append(update_texts::kDetailsNotFound[exit_code]);
  if (matching) log().Append(update_texts::kMatching);
}

void UpdateEngine::ReportNewerPack(std::size_t exit_code) {
  switch (TestNewerPack()) {
    case NewerPack::exists:
      ReportFound(exit_code);
      break;
    case NewerPack::none:
      ReportNotFound(exit_code, true);
      break;
    case NewerPack::unknown:
      break;
  }
}

void UpdateEngine::CompareWithoutRecord() {
  if (UpdateSections.size() >= kHeadingAndPack) {
    ReportNewerPack(kWithoutRecord);
    return;
  }
  log().Append(update_texts::kRecordMissing);
  ReportNotFound(kWithoutRecord, false);
}

void UpdateEngine::CompareWithRecord(const std::wstring& record) {
  log().Append(variant_.record_found);
  const std::wstring text = ReadInstalledRecord(record);
  const std::wstring content(text::Trim(text));
  if (UpdateSections.size() < kHeadingAndPack) {
    ReportNotFound(kEmptyRecordOrList, false);
  } else if (content.empty()) {
    ReportNewerPack(kEmptyRecordOrList);
  } else if (CountRecordedPacks(UpdateSections, content) == UpdateSections.size() - 1) {
    CompareWithCoveringRecord(record, content);
  } else {
    ReportNewerPack(kWithRecord);
  }
}

void UpdateEngine::CompareWithCoveringRecord(const std::wstring& record, const std::wstring& content) {
  ReadRecordVersion(content);
  if (ProductVersionNumber >= RecordVersionNumber) {
    ReportNotFound(kWithRecord, true);
    return;
  }
  DeleteRecord(record);
  ReportFound(kWithRecord);
}

void UpdateEngine::DeleteRecord(const std::wstring& record) {
  if (DeleteFileW(record.c_str())) {
    log().Append(variant_.record_deleted);
    return;
  }
  const DWORD error = GetLastError();
  if (error == ERROR_ACCESS_DENIED) {
    log().Append(update_texts::kRecordDenied);
    return;
  }
  log().Append(update_texts::kRecordNotDeleted);
  log().Append(std::wstring(log_texts::kError).append(platform::ErrorNumber(error)));
}
