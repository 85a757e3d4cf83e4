#pragma once

#include "log/log_sink.h"
#include "settings/registered_data.h"
#include "settings/update_settings.h"
#include "update/check_variant.h"
#include "update/comparison.h"
#include "update/exchange.h"

/// The steps of one update check. A check runs them in its own order and reads their results.
class UpdateEngine {
 public:
  /// `facts`, `log` and `variant` outlive the engine.
  UpdateEngine(RegistryFacts& facts, LogSink& log, const CheckVariant& variant)
      : entries(facts, log),
        exchange(entries, settings, variant, log),
        comparison(entries, exchange, variant, log) {}
  UpdateEngine(const UpdateEngine&) = delete;
  UpdateEngine& operator=(const UpdateEngine&) = delete;
  ~UpdateEngine() = default;

  RegisteredDataEntries entries;
  UpdateSettings settings;
  Exchange exchange;
  Comparison comparison;
};
