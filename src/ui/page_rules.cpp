#include "ui/page_rules.h"

#include "ui/ui_texts.h"

namespace {

constexpr std::wstring_view kExtension = L".txt";

/// The error text of the failure that the page has to show; empty when there is none.
std::wstring_view FailureDetail(const PageResults& results) {
  if (results.interactive) return results.sheet_check_failed ? results.sheet_error_text : std::wstring_view();
  return results.last_check_failed ? results.last_check_error : std::wstring_view();
}

void OfferUpdates(const PageResults& results, PageState& state) {
  state.text = ui_texts::kUpdatesAvailable;
  state.install_enabled = true;
  state.continue_offered = !results.interactive;
}

void ShowFailure(std::wstring_view detail, PageState& state) {
  // The status number distinguishes a server that has no list from one that was not reached.
  const bool not_found = detail.find(ui_texts::kNotFoundStatus) != std::wstring_view::npos;
  state.text = not_found ? ui_texts::kListNotFound : ui_texts::kConnectionFailed;
  state.text += detail;
  state.retry_enabled = true;
}

}  // namespace

PageState DecidePageState(const PageResults& results) {
  PageState state;
  const std::wstring_view detail = FailureDetail(results);
  if (results.sheet_updates_available) {
    OfferUpdates(results, state);
  } else if (!detail.empty()) {
    ShowFailure(detail, state);
  } else if (results.interactive || !results.last_updates_found) {
    state.text = ui_texts::kNoUpdates;
  } else if (!results.last_check_failed) {
    OfferUpdates(results, state);
  }

  if (!results.product_installed) {
    state.text = ui_texts::kNotInstalled;
    state.install_enabled = false;
    state.retry_enabled = false;
  }
  return state;
}

std::optional<std::wstring> SavedLogPath(std::wstring_view path) {
  // Without a backslash the whole path, because npos + 1 is 0.
  const std::wstring_view name = path.substr(path.rfind(L'\\') + 1);
  const std::size_t dot = name.rfind(L'.');
  if (dot == name.npos) return std::wstring(path).append(kExtension);
  if (name.substr(dot) != kExtension) return std::nullopt;
  return std::wstring(path);
}
