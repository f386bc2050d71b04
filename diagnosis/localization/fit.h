#pragma once

#include "diagnosis/localization/fault.h"
#include "diagnosis/localization/row_data.h"

namespace diagnosis {

/// How well a fault fits a row.
enum class Fit {
  refuted,
  doubtful,  // it gives every answer, but other bytes changed that it leaves alone, or what stood
             // in the buffer at first would have to be this or that by chance
  explains,
};

/// Whether a device with that fault gives every answer of the row. Where an answer hangs on bytes
/// that nobody saw, it may be any; a fault of which most answers do explains nothing.
Fit FitOf(const Fault& fault, const RowData& data);

}  // namespace diagnosis
