#include "platform/journaled_file.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string_view>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/handles.h"
#include "text/text.h"

namespace platform {
namespace {

constexpr wchar_t kExtension[] = L".journal";
/// Longest wait, and the pause between two looks, in milliseconds.
constexpr DWORD kWaitMs = 1000;
constexpr DWORD kPauseMs = 20;
/// A larger file is not rewritten: its bytes are kept in memory and in the journal.
constexpr std::size_t kLimit = 64 * 1024 * 1024;
/// A file that was written so long after its journal, in 100 ns, was written by somebody else: whoever made
/// the journal wrote at once.
constexpr ULONGLONG kSomebodyElse = 60 * 10'000'000ull;

/// Begins a journal. Only programs of this machine read it, so the byte order is its own.
struct Header {
  std::array<char, 16> mark{"Rewriting 1\r\n"};
  DWORD existed = 0;  ///< 0: there was no file; the bytes behind are those that are to be copied
  DWORD volume = 0, index_high = 0, index_low = 0;
  DWORD size = 0, sum = 0;  ///< of the bytes behind
};

struct State {
  Header header;
  std::string bytes;
  ULONGLONG last_write = 0;
};

/// FNV-1a, 32 bits.
DWORD Sum(std::string_view bytes) {
  DWORD sum = 2166136261u;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 16777619u;
  return sum;
}

std::wstring TurnName(const std::wstring& path) {
  return L"Local\\Rewriting-" + text::FormatDecimal(Sum(ToUtf8(path)));
}

ULONGLONG Time(const FILETIME& time) {
  return ULARGE_INTEGER{{time.dwLowDateTime, time.dwHighDateTime}}.QuadPart;
}

/// The file as it is; with `copied` for its bytes when there is none. Nothing when that cannot be told.
std::optional<State> Look(const std::wstring& path, std::string copied = {}) {
  State state{{}, std::move(copied)};
  const UniqueFile file = OpenForReading(path);
  // Asked twice: a file that is just being put in another's place is missing for a moment.
  if (!file && (GetLastError() != ERROR_FILE_NOT_FOUND || FileExists(path))) return std::nullopt;
  if (file) {
    BY_HANDLE_FILE_INFORMATION information{};
    std::optional<std::string> bytes = ReadAll(file.get(), kLimit);
    if (!bytes || !GetFileInformationByHandle(file.get(), &information)) return std::nullopt;
    state.bytes = std::move(*bytes);
    state.last_write = Time(information.ftLastWriteTime);
    state.header.existed = 1;
    state.header.volume = information.dwVolumeSerialNumber;
    state.header.index_high = information.nFileIndexHigh;
    state.header.index_low = information.nFileIndexLow;
  }
  state.header.size = static_cast<DWORD>(state.bytes.size());
  state.header.sum = Sum(state.bytes);
  return state;
}

bool IsSameFile(const Header& one, const Header& other) {
  return one.volume == other.volume && one.index_high == other.index_high && one.index_low == other.index_low;
}

/// Whether copying `whole` ended on its way; a copy may have its full length from the start, and zeros there.
bool IsTornCopy(std::string_view bytes, std::string_view whole) {
  const std::string_view written = bytes.substr(0, bytes.find_last_not_of('\0') + 1);
  return whole.starts_with(written) && (bytes != whole || whole.empty());
}

/// Also one that is marked as read-only, as a copy of such a file is.
bool RemoveFile(const std::wstring& path) {
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  return DeleteFileW(path.c_str()) != FALSE;
}

/// Makes the file what it was. False when that cannot be done now.
bool PutBack(const std::wstring& path, const State& before) {
  const std::optional<State> now = Look(path);
  if (!now) return false;
  if (now->header.existed == 0) return true;
  if (before.header.existed == 0) return !IsTornCopy(now->bytes, before.bytes) || RemoveFile(path);
  if (now->bytes == before.bytes || !IsSameFile(now->header, before.header)) return true;
  const UniqueFile file = OpenForWriting(path, OPEN_EXISTING);
  return file && WriteAll(file.get(), before.bytes) && SetEndOfFile(file.get());
}

/// Removes a journal through its handle, behind which nobody else can have opened it. One that cannot be
/// removed so is emptied first: it then asks for nothing any more.
void RemoveJournal(UniqueFile journal, const std::wstring& path) {
  FILE_DISPOSITION_INFO removed{TRUE};
  if (SetFileInformationByHandle(journal.get(), FileDispositionInfo, &removed, sizeof removed)) return;
  if (SetFilePointerEx(journal.get(), {}, nullptr, FILE_BEGIN)) SetEndOfFile(journal.get());
  journal.reset();
  DeleteFileW(path.c_str());
}

enum class Journal { none, unserved, in_use };

/// Does what a journal asks for. False when it has to stay, because its bytes could not be put back.
bool Serve(HANDLE journal, const std::wstring& path, const std::string& content) {
  State before;
  if (content.size() < sizeof before.header) return true;
  std::memcpy(&before.header, content.data(), sizeof before.header);
  before.bytes = content.substr(sizeof before.header);
  if (before.bytes.size() != before.header.size || Sum(before.bytes) != before.header.sum) return true;
  const std::optional<State> now = Look(path);
  BY_HANDLE_FILE_INFORMATION information{};
  if (!now || !GetFileInformationByHandle(journal, &information)) return false;
  if (now->last_write >= Time(information.ftLastWriteTime) + kSomebodyElse) return true;
  // Written once more, so that the file is not taken for somebody else's when this ends on its way.
  return SetFilePointerEx(journal, {}, nullptr, FILE_BEGIN) &&
         WriteAll(journal, {before.header.mark.data(), before.header.mark.size()}) && PutBack(path, before);
}

/// Looks into what may be a journal, and removes it when it is one and has been served.
Journal ServeJournal(const std::wstring& name, const std::wstring& path) {
  UniqueFile journal(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                                 OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!journal) {
    const DWORD error = GetLastError();
    if (error == ERROR_FILE_NOT_FOUND) return Journal::none;
    return error == ERROR_SHARING_VIOLATION ? Journal::in_use : Journal::unserved;
  }
  const std::optional<std::string> content = ReadAll(journal.get(), kLimit + sizeof(Header));
  if (!content) return Journal::unserved;
  const auto& mark = Header{}.mark;
  if (!std::equal(mark.begin(), mark.begin() + std::min(mark.size(), content->size()), content->begin())) {
    return Journal::none;
  }
  if (!Serve(journal.get(), path, *content)) return Journal::unserved;
  RemoveJournal(std::move(journal), name);
  return Journal::none;
}

/// "PROCESS-TICKS" in decimal.
bool IsJournalNumber(std::wstring_view text) {
  const std::size_t dash = text.find(L'-');
  return text.find_first_not_of(L"0123456789-") == text.npos && dash != text.npos && dash != 0 &&
         dash == text.rfind(L'-') && dash + 1 != text.size();
}

/// Puts right what writers left that were ended, and tells what is left of their journals. Where they cannot
/// be looked for, one may be left. `own` is none of them.
Journal Settle(const std::wstring& path, const std::wstring& own = {}) {
  WIN32_FIND_DATAW data{};
  const UniqueFind find(FindFirstFileW((path + L".*" + kExtension).c_str(), &data));
  if (!find) return GetLastError() == ERROR_FILE_NOT_FOUND ? Journal::none : Journal::unserved;
  const std::size_t folder = path.rfind(L'\\') + 1;
  Journal left = Journal::none;
  do {
    const std::wstring name = path.substr(0, folder) + data.cFileName;
    const std::wstring stem = name.substr(0, name.rfind(L'.'));
    const bool is_folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (name == own) continue;
    if (is_folder || stem.size() <= path.size() || !IsJournalNumber(stem.substr(path.size() + 1))) continue;
    left = std::max(left, ServeJournal(name, path));
  } while (FindNextFileW(find.get(), &data));
  return GetLastError() == ERROR_NO_MORE_FILES ? left : std::max(left, Journal::unserved);
}

/// Whether the file is still `before` and nobody else rewrites it, once the journal `own` is there for all to
/// see: whoever looks later waits, and of two that make theirs at one moment neither goes on.
bool IsAlone(const std::wstring& path, const State& before, const std::wstring& own) {
  const bool alone = Settle(path, own) == Journal::none;
  const std::optional<State> now = alone ? Look(path) : std::nullopt;
  return now && now->bytes == before.bytes;
}

/// Opened so that others see by trying that it is in use. No handle, with the last error, on failure; with
/// `needed` it is one that somebody else rewrites the file (ERROR_SHARING_VIOLATION).
UniqueFile MakeJournal(const std::wstring& name, const std::wstring& path, const State& before, bool needed) {
  UniqueFile journal(CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                                 FILE_ATTRIBUTE_NORMAL | FILE_FLAG_WRITE_THROUGH, nullptr));
  if (!journal) return journal;
  DWORD error = ERROR_SHARING_VIOLATION;
  if (!needed || IsAlone(path, before, name)) {
    // In one piece, so that it is hardly ever torn.
    std::string bytes(reinterpret_cast<const char*>(&before.header), sizeof before.header);
    bytes += before.bytes;
    if (WriteAll(journal.get(), bytes)) return journal;
    error = GetLastError();
  }
  RemoveJournal(std::move(journal), name);
  SetLastError(error);
  return {};
}

/// Calls `write`, and after a failure makes the file what it was, with the last error of the failure.
/// `right`: the file is as it is to be.
bool Attempt(const std::wstring& path, const State& before, const std::function<bool()>& write, bool& right) {
  SetLastError(ERROR_SUCCESS);
  const bool done = write();
  const DWORD error = GetLastError();
  // Behind whoever else has it open nothing was written: what the file is by now is his.
  right = done || error == ERROR_SHARING_VIOLATION || PutBack(path, before);
  for (DWORD waited = 0; !right && waited < kWaitMs; waited += kPauseMs) {
    Sleep(kPauseMs);
    right = PutBack(path, before);
  }
  SetLastError(error);
  return done;
}

/// Attempts it while the file's old state is kept; without it where no journal can be made, unless that is
/// because the disk is full, or somebody else rewrites the file, and `needed` says that there is something to
/// lose.
bool Change(const std::wstring& path, const State& before, bool needed, const std::function<bool()>& write) {
  const std::wstring name = path + L"." + text::FormatDecimal(GetCurrentProcessId()) + L"-" +
                            text::FormatDecimal(GetTickCount()) + kExtension;
  UniqueFile journal = MakeJournal(name, path, before, needed);
  DWORD error = GetLastError();
  if (!journal && needed && (error == ERROR_DISK_FULL || error == ERROR_SHARING_VIOLATION)) return false;
  bool right = false;
  const bool done = Attempt(path, before, write, right);
  error = GetLastError();
  if (journal && right) RemoveJournal(std::move(journal), name);
  SetLastError(error);
  return done;
}

}  // namespace

JournaledFile::JournaledFile(const std::wstring& path) : path_(path), turn_(TurnName(path).c_str()) {
  const DWORD start = GetTickCount();
  turn_.Take();
  // Also without the turn, or when the writer belongs to another session, which has turns of its own.
  Journal left = Settle(path_);
  for (; left == Journal::in_use && GetTickCount() - start < kWaitMs; left = Settle(path_)) Sleep(kPauseMs);
  writable_ = left == Journal::none;
}

bool JournaledFile::Rewrite(const std::function<bool(std::string_view)>& write) {
  if (!writable_) {
    SetLastError(ERROR_SHARING_VIOLATION);
    return false;
  }
  const std::optional<State> before = Look(path_);
  return before && Change(path_, *before, before->header.existed != 0, [&] { return write(before->bytes); });
}

bool JournaledFile::CopyFrom(const std::wstring& source) {
  const auto copy = [&] { return CopyFileW(source.c_str(), path_.c_str(), FALSE) != FALSE; };
  const std::optional<std::string> bytes = ReadWholeFile(source, kLimit);
  const std::optional<State> before = bytes && writable_ ? Look(path_, *bytes) : std::nullopt;
  if (!before) return copy();
  if (Change(path_, *before, false, copy)) return true;
  // The journal may have taken the room that the copy needs.
  bool right = false;
  return GetLastError() == ERROR_DISK_FULL && Attempt(path_, *before, copy, right);
}

}  // namespace platform
