#include "update/list_file.h"

#include <windows.h>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/profile.h"
#include "text/text.h"
#include "update/section_names.h"

namespace {

constexpr wchar_t kSharedName[] = L"updates.ini";
constexpr wchar_t kTurn[] = L"Local\\QRT_15_TavrelUtility_UpdatesFile";
/// Longest wait for the turn, in milliseconds: another utility can be copying from a slow server.
constexpr DWORD kWaitMs = 1000;

// No other running utility has this one; what one that was ended left behind is replaced.
std::wstring OwnName() {
  return L"updates-" + text::FormatDecimal(GetCurrentProcessId()) + L".ini";
}

}  // namespace

ListFile::ListFile() : folder_(platform::TemporaryFolder()), turn_(kTurn) {}

ListFile::~ListFile() {
  if (goes_away_) DeleteFileW(path_.c_str());
}

platform::UniqueFile ListFile::Create() {
  turn_.Take(kWaitMs);
  // Without a temporary folder the path stays empty and cannot be created: never the current folder.
  if (!folder_.empty()) path_ = folder_ + (turn_.IsHeld() ? kSharedName : OwnName());
  platform::UniqueFile file = platform::OpenForWriting(path_, CREATE_ALWAYS);
  goes_away_ = file && !turn_.IsHeld();
  return file;
}

bool ListFile::Exists() const {
  return platform::FileExists(path_);
}

void ListFile::ReadNames(std::vector<std::wstring>& sections) const {
  AppendSectionNames(platform::ReadProfileSectionNames(path_, kSectionNamesCapacity), sections);
}
