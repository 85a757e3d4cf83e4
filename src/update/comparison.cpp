#include "update/comparison.h"

#include <windows.h>

#include <optional>

#include "log/log_texts.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/system_text.h"
#include "text/text.h"
#include "update/record_text.h"
#include "update/update_texts.h"

namespace {

constexpr std::wstring_view kRecordFile = L"\\installedupdates.dat";

}  // namespace

void Comparison::CompareUpdates(const std::wstring& productIconPath, const std::wstring& /*productVersion*/) {
  product_.ReadProductVersionNumber();
  UpdateSections.clear();
  const std::wstring path =
      std::wstring(text::SplitAtLastBackslash(productIconPath).folder).append(kRecordFile);
  // Checked before the exchange, because an update that runs meanwhile may write the record.
  const bool has_record = platform::FileExists(path);
  exchange_.DownloadUpdateList(UpdateSections);
  if (UpdateSections.size() > 1) FindLatestPack();
  std::optional<std::wstring> record;
  if (has_record) {
    log_.Append(variant_.record_found);
    record = ReadInstalledRecord(path);
  }
  const CheckFacts facts{
      .sections = UpdateSections,
      .latest = {.level = LatestLevel, .build = LatestBuild},
      .record = record,
      .product_version = product_.ProductVersionNumber,
      .product_level = product_.ProductVersionThird,
      .product_build = product_.ProductVersionFourth,
      .record_version = RecordVersionNumber,
  };
  const Decision decision = Decide(facts, variant_.record_deleted);
  if (record && decision.record_covers_list) ReadRecordVersion(*record);
  CarryOut(decision, path);
}

void Comparison::FindLatestPack() {
  LatestPack latest{.level = LatestLevel, .build = LatestBuild};
  ::FindLatestPack(UpdateSections, latest);
  LatestLevel = latest.level;
  LatestBuild = latest.build;
}

void Comparison::ReadRecordVersion(std::wstring_view text) {
  RecordVersionNumber = ParseRecordVersion(text).value_or(RecordVersionNumber);
}

std::wstring Comparison::ReadInstalledRecord(const std::wstring& path) {
  const auto bytes = platform::ReadWholeFile(path, kRecordSizeLimit);
  if (!bytes) {
    log_.Append(platform::SystemMessage(GetLastError()));
    log_.Append(update_texts::kRecordReadFailed);
    return {};
  }
  log_.Append(update_texts::kRecordRead);
  return platform::FromAnsi(*bytes);
}

void Comparison::CarryOut(const Decision& decision, const std::wstring& record_path) {
  if (decision.removal) DeleteRecord(*decision.removal, record_path);
  if (decision.offered) SetUpdatesAvailable(*decision.offered);
  for (const std::wstring_view entry : decision.entries) log_.Append(entry);
}

void Comparison::DeleteRecord(const Decision::Removal& removal, const std::wstring& path) {
  if (DeleteFileW(path.c_str())) {
    log_.Append(removal.deleted);
    return;
  }
  const DWORD error = GetLastError();
  log_.Append(error == ERROR_ACCESS_DENIED ? removal.denied : removal.failed);
  if (error == ERROR_ACCESS_DENIED) return;
  log_.Append(std::wstring(log_texts::kError).append(platform::ErrorNumber(error)));
}

void Comparison::SetUpdatesAvailable(bool available) {
  m_bUpdatesAvailable = available;
  if (variant_.updates_available_mirror != nullptr) *variant_.updates_available_mirror = available;
}
