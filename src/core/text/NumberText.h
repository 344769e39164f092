#pragma once

namespace corvane {

/// Value to print so that the truncation of `formatFixed` shows it rounded to `decimals` digits.
double roundForDisplay(double value, int decimals);

/// Writes `value` with `decimals` digits behind the point, in at most 8 characters; integer digits come
/// first when room is short. Values above 99999999 or below -9999999 leave `text` as it was.
/// `text`: at least 16 bytes.
void formatFixed(float value, int decimals, char* text);

/// Frequency the way an engineer writes it: 99.5, 440, 1k, 2k25, 12k5. `text`: at least 16 bytes.
void formatFrequency(float hz, char* text);

}  // namespace corvane
