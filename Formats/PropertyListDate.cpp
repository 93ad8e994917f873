#include "Formats/PropertyListDate.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace platform {

namespace {

using namespace std::chrono;

constexpr sys_seconds kReference = sys_days{year{2001} / 1 / 1};
constexpr double kFirst = static_cast<double>((sys_seconds{sys_days{year{1} / 1 / 1}} - kReference).count());
constexpr double kEnd =
    static_cast<double>((sys_seconds{sys_days{year{10000} / 1 / 1}} - kReference).count());

} // namespace

std::optional<PropertyList::Date> parsePropertyListDate(std::string_view text) {
    constexpr std::string_view kShape = "dddd-dd-ddTdd:dd:ddZ";
    if (text.size() != kShape.size()) return std::nullopt;
    std::array<int, 6> fields{}; // year, month, day, hour, minute, second
    std::size_t field = 0;
    for (std::size_t i = 0; i < kShape.size(); ++i) {
        if (kShape[i] != 'd') {
            if (text[i] != kShape[i]) return std::nullopt;
            ++field;
            continue;
        }
        if (text[i] < '0' || text[i] > '9') return std::nullopt;
        fields[field] = fields[field] * 10 + (text[i] - '0');
    }
    const year_month_day day{year{fields[0]}, month{static_cast<unsigned>(fields[1])},
        std::chrono::day{static_cast<unsigned>(fields[2])}};
    if (fields[0] == 0 || !day.ok() || fields[3] > 23 || fields[4] > 59 || fields[5] > 59)
        return std::nullopt;
    const sys_seconds moment = sys_days{day} + hours{fields[3]} + minutes{fields[4]} + seconds{fields[5]};
    return PropertyList::Date{static_cast<double>((moment - kReference).count())};
}

std::string formatPropertyListDate(PropertyList::Date date) {
    const double whole = std::floor(clampToCalendar(date).seconds);
    const sys_seconds moment = kReference + seconds{static_cast<std::int64_t>(whole)};
    const sys_days midnight = floor<days>(moment);
    const year_month_day day{midnight};
    const hh_mm_ss time{moment - midnight};
    std::array<char, 64> text{};
    const int length = std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
        static_cast<int>(day.year()), static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count()));
    return {text.data(), static_cast<std::size_t>(length)};
}

bool isInCalendar(PropertyList::Date date) {
    return date.seconds >= kFirst && date.seconds < kEnd;
}

PropertyList::Date clampToCalendar(PropertyList::Date date) {
    if (std::isnan(date.seconds)) return {};
    return {std::clamp(date.seconds, kFirst, std::nextafter(kEnd, 0.0))};
}

} // namespace platform
