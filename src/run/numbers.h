// Number reading shared by the run engine.
#pragma once

// Reads a leading number: digits and "." (and "-" first), up to 32 characters
// of which the first 18 count. '1,000' reads as 1; an empty text gives 0.
double ParseFloat(const char* text);
