#ifndef ORVSDK_HOST_IO_ORVNUMBERTEXT_H
#define ORVSDK_HOST_IO_ORVNUMBERTEXT_H

#include "orvsdk/host/OrvHostExport.h"

#include <string>

namespace orvsdk {

// The one way numbers are written as text by the writers: std::to_chars into a small stack
// buffer appended to the caller's text, so no allocation happens per number once the text has
// room; '.' is the decimal point whatever the process locale, and a value that prints as zero
// never carries a minus sign.

/// Appends pValue with at most pSignificantDigits significant digits (1 to 17), in plain or
/// exponent form, whichever is shorter, as printf's "%.*g" does.
ORVHOST_API void OrvAppendGeneral(std::string& pText, double pValue, int pSignificantDigits);

/// Appends pValue with exactly pDecimals digits after the point (0 to 17).
ORVHOST_API void OrvAppendFixed(std::string& pText, double pValue, int pDecimals);

} // namespace orvsdk

#endif
