#include "product/identity.h"

#define TAVREL_WIDEN2(text) L##text
#define TAVREL_WIDEN(text) TAVREL_WIDEN2(text)

namespace identity {

std::wstring_view DefaultUpdateHost() {
  return TAVREL_WIDEN(TAVREL_UPDATE_HOST);
}

std::wstring_view ProbeAddress() {
  return TAVREL_WIDEN(TAVREL_PROBE_ADDRESS);
}

}  // namespace identity
