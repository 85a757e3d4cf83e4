#pragma once

#include "log/log_sink.h"
#include "settings/registered_data.h"
#include "settings/update_settings.h"
#include "update/check_variant.h"
#include "update/comparison.h"
#include "update/exchange.h"

/// The steps of one update check side by side, each handed what it takes. The owner decides which of them run
/// in which order, and reads what they give.
class UpdateEngine : public RegisteredDataEntries, public UpdateSettings, public Exchange, public Comparison {
 public:
  /// `variant` outlives the engine.
  UpdateEngine(RegistryFacts& facts, LogSink& log, const CheckVariant& variant)
      : RegisteredDataEntries(facts, log),
        Exchange(*this, *this, variant, log),
        Comparison(*this, *this, variant, log) {}
  UpdateEngine(const UpdateEngine&) = delete;
  UpdateEngine& operator=(const UpdateEngine&) = delete;
  ~UpdateEngine() = default;
};
