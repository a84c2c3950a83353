// The mark of a printf-like helper, on its own so that the lowest headers
// (text, settings) can carry it without including the log.
#pragma once

// Marks a printf-like helper, so that the compiler checks its arguments and
// refuses a format that is not a literal (-Wformat=2 -Werror=format-security):
// a text from a script or a window goes through "%s", never as the format.
#define ZR_PRINTF(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
