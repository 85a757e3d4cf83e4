#include "update/list_file.h"

#include <windows.h>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/profile.h"
#include "product/identity.h"
#include "text/text.h"
#include "update/section_names.h"

using platform::OpenWhenFree;

namespace {

constexpr wchar_t kSharedName[] = L"updates.ini";
constexpr wchar_t kMutex[] = L"Local\\" TAVREL_PREFIX "_TavrelUtility_UpdatesFile";

// No other running process uses this name. A file of an earlier process with the same number is overwritten.
std::wstring PrivateName() {
  return L"updates-" + text::FormatDecimal(GetCurrentProcessId()) + L".ini";
}

}  // namespace

ListFile::ListFile() : folder_(platform::TemporaryFolder()), mutex_(kMutex) {}

ListFile::~ListFile() {
  file_.reset();
  keeper_.reset();
  if (temporary_) DeleteFileW(path_.c_str());
}

bool ListFile::Create() {
  mutex_.Take();
  // Without a temporary folder the path stays empty and the call fails; the current folder is never used.
  if (!folder_.empty()) path_ = folder_ + (mutex_.IsHeld() ? kSharedName : PrivateName());
  file_ = OpenWhenFree([this] { return platform::OpenForWriting(path_, CREATE_ALWAYS); });
  temporary_ = file_ && !mutex_.IsHeld();
  if (file_) keeper_ = OpenWhenFree([this] { return platform::OpenForReading(path_); });
  return static_cast<bool>(keeper_);
}

bool ListFile::Write(std::string_view bytes) {
  return platform::WriteAll(file_.get(), bytes);
}

void ListFile::Close() {
  file_.reset();
}

bool ListFile::Exists() const {
  return platform::FileExists(path_);
}

bool ListFile::ReadNames(std::vector<std::wstring>& sections) const {
  // The profile functions return an empty list for a file that they cannot open, so this call opens it first
  // to detect that. The handle also denies writing.
  const platform::UniqueFile guard =
      OpenWhenFree([this] { return platform::OpenForReading(path_, FILE_SHARE_READ); });
  if (!guard) return false;
  AppendSectionNames(platform::ReadProfileSectionNames(path_, kSectionNamesCapacity), sections);
  return true;
}
