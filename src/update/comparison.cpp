#include "update/update_engine.h"

#include <windows.h>

#include <optional>

#include "log/log_texts.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/system_text.h"
#include "text/text.h"
#include "update/update_texts.h"

namespace {

constexpr std::wstring_view kRecordFile = L"\\installedupdates.dat";

}  // namespace

void UpdateEngine::CompareUpdates(const std::wstring& productIconPath,
                                  const std::wstring& /*productVersion*/) {
  NetworkErrorCodes.assign(update_texts::kNetworkErrorCodes.begin(), update_texts::kNetworkErrorCodes.end());
  ReadProductVersionNumber();
  UpdateSections.clear();
  const std::wstring record_path =
      std::wstring(text::SplitAtLastBackslash(productIconPath).folder).append(kRecordFile);
  // Looked for before the exchange, because an update that runs meanwhile may write the record.
  const bool has_record = platform::FileExists(record_path);
  DownloadUpdateList(UpdateSections);
  const bool has_pack = UpdateSections.size() > 1;
  if (has_pack) FindLatestPack();
  std::optional<std::wstring> record;
  if (has_record) {
    log_.Append(variant_.record_found);
    record = ReadInstalledRecord(record_path);
    if (has_pack && CountRecordedPacks(UpdateSections, *record) + 1 == UpdateSections.size())
      ReadRecordVersion(*record);
  }
  const Decision decision = Decide({.sections = UpdateSections,
                                    .latest = {.level = LatestLevel, .build = LatestBuild},
                                    .record = record,
                                    .record_version = RecordVersionNumber,
                                    .product_version = ProductVersionNumber,
                                    .product_level = ProductVersionThird,
                                    .product_build = ProductVersionFourth});
  if (decision.delete_record) DeleteRecord(record_path);
  if (decision.offered) SetUpdatesAvailable(*decision.offered);
  for (const std::wstring_view entry : decision.entries) log_.Append(entry);
}

void UpdateEngine::FindLatestPack() {
  LatestPack latest{.level = LatestLevel, .build = LatestBuild};
  ::FindLatestPack(UpdateSections, latest);
  LatestLevel = latest.level;
  LatestBuild = latest.build;
}

void UpdateEngine::ReadRecordVersion(std::wstring_view text) {
  RecordVersionNumber = ParseRecordVersion(text).value_or(RecordVersionNumber);
}

std::wstring UpdateEngine::ReadInstalledRecord(const std::wstring& path) {
  const auto bytes = platform::ReadWholeFile(path, kRecordSizeLimit);
  if (!bytes) {
    log_.Append(platform::SystemMessage(GetLastError()));
    log_.Append(update_texts::kRecordReadFailed);
    return {};
  }
  log_.Append(update_texts::kRecordRead);
  return platform::FromAnsi(*bytes);
}

void UpdateEngine::DeleteRecord(const std::wstring& path) {
  if (DeleteFileW(path.c_str())) {
    log_.Append(variant_.record_deleted);
    return;
  }
  const DWORD error = GetLastError();
  log_.Append(error == ERROR_ACCESS_DENIED ? update_texts::kRecordDenied : update_texts::kRecordNotDeleted);
  if (error == ERROR_ACCESS_DENIED) return;
  log_.Append(std::wstring(log_texts::kError).append(text::FormatDecimal(error)));
}
