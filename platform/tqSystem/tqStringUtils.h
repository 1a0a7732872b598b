// Locale-independent conversions between numbers and text, and small string helpers.
#pragma once

#include <locale.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tqSystem/tqSystemExport.h"
#include "tqSystem/tqTypes.h"

class TQSYSTEM_EXPORT tqStringUtils {
public:
    enum class FloatFormat { Fixed = 0, Scientific = 1, Compact = 2 };

    // Compact: with precision < 0 or >= 9 the shortest text that reads back as the same float
    // ("0.1", "1e+20", "-2.5"); with 1 to 8 (0 counts as 1) at most that many significant
    // digits, rounded, never more digits than the shortest text. Fixed and Scientific are the
    // "%.*f" and "%.*e" forms (precision -1 meaning 6). NaN gives "nan", infinities "inf" and
    // "-inf", negative zero "-0".
    static std::string fromFloat(float value, int precision, FloatFormat format);
    // The same text appended to `out`, without a temporary string.
    static void appendFloat(std::string& out, float value, int precision, FloatFormat format);
    // The Compact text written at `out`, which must have room for CompactFloatRoom bytes (the
    // text is shorter; the bytes after it may be overwritten). Returns the end of the text.
    static constexpr std::size_t CompactFloatRoom = 64;
    static char* writeCompactFloat(char* out, float value, int precision);

    // Decimal with at least `minDigits` digits, zero-padded after any sign.
    static std::string fromInt64(int64 value, int minDigits);
    static std::string fromUInt64(uint64 value, int minDigits);

    // Replaces every occurrence of `from`, left to right, without rescanning replaced text;
    // an empty `from` changes nothing.
    static void replace(std::string& text, const std::string& from, const std::string& to);

    // The parts between separators; with `skipEmpty` the empty parts are dropped.
    static std::vector<std::string> Split(const std::string& text, char separator, bool skipEmpty);

    static bool endsWith(const std::string& text, const std::string& suffix);

    // Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
    static bool IsUtf8String(const std::string& text);

    // The C locale, created once: number conversions use it (strtod_l, strtol_l), never the
    // process locale.
    static locale_t msCLocale;
};
