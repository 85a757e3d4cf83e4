#include "update/update_engine.h"

#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <array>

#include "platform/http.h"
#include "product/identity.h"
#include "text/text.h"
#include "update/list_file.h"
#include "update/section_names.h"
#include "update/update_texts.h"

struct ExchangeProgress {
  const ULONGLONG start = GetTickCount64();
  int redirections = 0;

  bool IsLate() const;
};

namespace {

constexpr DWORD kReadBlock = 4096;
constexpr DWORD kStatusOk = 200;
constexpr DWORD kStatusNotFound = 404;
// The receive time-out bounds one pause of the server. These bound how often a server may use it.
constexpr ULONGLONG kLongestExchangeMs = 300000;
constexpr int kMostRedirections = 10;
/// INTERNET_SUPPRESS_COOKIE_PERSIST, which the header of MinGW-w64 lacks.
constexpr DWORD kStoreNoCookies = 3;

/// WinInet calls this between the steps of a request, on the thread that sends it. A short time-out ends the
/// request; closing its handle does not end a redirection under Wine.
void CALLBACK OnStatus(HINTERNET request, DWORD_PTR context, DWORD status, void*, DWORD) {
  auto& progress = *reinterpret_cast<ExchangeProgress*>(context);
  if (status == INTERNET_STATUS_REDIRECT) ++progress.redirections;
  if (progress.redirections <= kMostRedirections && !progress.IsLate()) return;
  DWORD timeout = 1;
  wininet::InternetSetOptionW(request, INTERNET_OPTION_RECEIVE_TIMEOUT, &timeout, sizeof timeout);
}

}  // namespace

bool ExchangeProgress::IsLate() const {
  return GetTickCount64() - start > kLongestExchangeMs;
}

std::wstring UpdateEngine::GetUpdatePathFromTagThree() {
  if (facts_.UpdateLocUrlMode) {
    log_.Append(update_texts::kUrlMode);
    return {};
  }
  const auto path = RequestPath(TagThree, UpdateLocation);
  log_.Append(path ? update_texts::kHostMatched : update_texts::kHostNotMatched);
  return std::wstring(path.value_or(std::wstring_view()));
}

void UpdateEngine::MatchNetworkErrorCode(std::wstring_view code) {
  for (const std::wstring& known : NetworkErrorCodes) {
    if (!text::EqualsIgnoreCase(known, code)) continue;
    m_bNetworkError = true;
    return;
  }
}

void UpdateEngine::SetErrorText(std::wstring_view text) {
  m_strErrorText.clear();
  if (!text.empty()) m_strErrorText.append(update_texts::kErrorPrefix).append(text);
}

bool UpdateEngine::ReportFailure(std::wstring_view message, unsigned long error, std::wstring_view advice) {
  log_.Append(message);
  SetCheckFailed(true);
  std::wstring code = text::FormatDecimal(error);
  MatchNetworkErrorCode(code);
  SetErrorText(code.append(advice));
  log_.Append(m_strErrorText);
  return false;
}

void UpdateEngine::DownloadUpdateList(std::vector<std::wstring>& sections) {
  ListFile file;
  const std::wstring path = GetUpdatePathFromTagThree();
  if (path.empty()) {
    log_.Append(update_texts::kInvalidTagThree);
    SetCheckFailed(true);
    SetErrorText(update_texts::kMismatch);
    log_.Append(m_strErrorText);
    return;
  }
  if (!wininet::InternetCheckConnectionW(identity::kProbeAddress, FLAG_ICC_FORCE_CONNECTION, 0)) {
    ReportFailure(update_texts::kProbeFailed, GetLastError(), update_texts::kCheckNetwork);
    return;
  }
  std::wstring pending_error;
  if (!FetchToFile(path, file, pending_error)) return;
  log_.Append(update_texts::kCompleted);
  if (!file.Exists()) {
    log_.Append(update_texts::kCopiedMissing);
    return;
  }
  if (!file.ReadNames(sections)) {
    ReportFailure(update_texts::kFileReadFailed, GetLastError());
    return;
  }
  SetCheckFailed(false);
  SetErrorText(pending_error);
}

bool UpdateEngine::FetchToFile(const std::wstring& path, ListFile& file, std::wstring& pending_error) {
  // For this process; Wine accepts the option and keeps the cookies.
  DWORD cookies = kStoreNoCookies;
  wininet::InternetSetOptionW(nullptr, INTERNET_OPTION_SUPPRESS_BEHAVIOR, &cookies, sizeof cookies);
  ExchangeProgress progress;
  const platform::UniqueInternet root(
      wininet::InternetOpenW(variant_.agent, INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0));
  if (!root) return ReportFailure(update_texts::kOpenFailed, GetLastError());

  // With zero or less every exchange would fail at once or wait for ever.
  DWORD timeout = static_cast<DWORD>(TimeoutMs > 0 ? TimeoutMs : kDefaultTimeoutMs);
  if (!wininet::InternetSetOptionW(root.get(), INTERNET_OPTION_RECEIVE_TIMEOUT, &timeout, sizeof timeout)) {
    const DWORD error = GetLastError();
    log_.Append(update_texts::kOptionStatus);
    log_.Append(text::FormatDecimal(error));
  }

  const platform::UniqueInternet connection(wininet::InternetConnectW(
      root.get(), UpdateLocation.c_str(), INTERNET_DEFAULT_HTTP_PORT, L"", L"", INTERNET_SERVICE_HTTP, 0, 0));
  if (!connection) return ReportFailure(update_texts::kConnectFailed, GetLastError());
  // Wine 8 ignores the time-out on the root handle. A failure is not logged a second time.
  wininet::InternetSetOptionW(connection.get(), INTERNET_OPTION_RECEIVE_TIMEOUT, &timeout, sizeof timeout);

  const wchar_t* accepted[] = {L"text/*", nullptr};
  const platform::UniqueInternet request(wininet::HttpOpenRequestW(
      connection.get(), L"GET", path.c_str(), nullptr, nullptr, accepted,
      INTERNET_FLAG_RELOAD | INTERNET_FLAG_EXISTING_CONNECT, reinterpret_cast<DWORD_PTR>(&progress)));
  if (!request) return ReportFailure(update_texts::kOpenRequestFailed, GetLastError());
  // WinInet treats a redirection to a name without dots as the local intranet, where it would log on with the
  // user's credentials. Wine, and Windows before Internet Explorer 8, do not know the option.
  wininet::InternetSetOptionW(request.get(), INTERNET_OPTION_SUPPRESS_SERVER_AUTH, nullptr, 0);
  wininet::InternetSetStatusCallbackW(request.get(), OnStatus);
  if (!wininet::HttpSendRequestW(request.get(), nullptr, 0, nullptr, 0))
    return ReportFailure(update_texts::kSendRequestFailed, GetLastError());
  if (!CheckStatus(request.get(), pending_error)) return false;
  return CopyBody(request.get(), progress, file);
}

bool UpdateEngine::CheckStatus(void* request, std::wstring& pending_error) {
  DWORD status = 0;
  DWORD size = sizeof status;
  const BOOL queried = wininet::HttpQueryInfoW(request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER,
                                               &status, &size, nullptr);
  const DWORD error = GetLastError();
  if (queried && status == kStatusOk) {
    log_.Append(update_texts::kFound);
    return true;
  }
  if (queried && status == kStatusNotFound) return ReportFailure(update_texts::kNotFound, status);
  pending_error = text::FormatDecimal(queried ? status : 0);
  log_.Append(update_texts::kStatusCode);
  log_.Append(pending_error);
  if (!queried) return ReportFailure(update_texts::kStatusFailed, error);
  return true;
}

bool UpdateEngine::CopyBody(void* request, const ExchangeProgress& progress, ListFile& file) {
  if (!file.Create()) return ReportFailure(update_texts::kFileFailed, GetLastError());
  for (std::size_t copied = 0;;) {
    std::array<char, kReadBlock> block{};
    DWORD available = 0, read = 0;
    // Asks first, because a read waits until it has all bytes that it asks for. At the end nothing is
    // available.
    if (!wininet::InternetQueryDataAvailable(request, &available, 0, 0) ||
        !wininet::InternetReadFile(request, block.data(),
                                   available == 0 ? kReadBlock : std::min(available, kReadBlock), &read))
      return ReportFailure(update_texts::kFileReadFailed, GetLastError());
    if (read == 0) break;
    copied += read;
    const bool late = progress.IsLate();
    if (late || copied > kListSizeLimit) {
      return ReportFailure(update_texts::kFileReadFailed,
                           late ? ERROR_INTERNET_TIMEOUT : ERROR_FILE_TOO_LARGE);
    }
    if (!file.Write({block.data(), read}))
      return ReportFailure(update_texts::kFileWriteFailed, GetLastError());
  }
  file.Close();
  return true;
}
