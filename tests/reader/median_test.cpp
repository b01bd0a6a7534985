// The quickselect median used for line and page measurements.

#include "lexicorn/reader/sentences/hook_pdf_page_text_tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

using lexicorn::HookPDFPageTextTool;

// The element of index (n-1)/2 in sorted order: the middle one for an odd
// count, the lower of the two middle ones for an even count.
double sortedMedian(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[(values.size() - 1) / 2];
}

std::string show(const std::vector<double>& values)
{
    std::string text;
    for (double v : values)
        text += std::to_string(int(v)) + ' ';
    return text;
}

struct MedianCase {
    const char* name;
    std::vector<double> values;
    double median;
};

TEST(MedianQuickselect, EmptyArrayGivesZero)
{
    EXPECT_EQ(HookPDFPageTextTool::findMedian(nullptr, 0), 0.0);
}

// Every array of up to seven values drawn from {0, 1, 2}: many duplicates,
// every order, the lower middle for an even count. Catches a partition that
// loses elements or a loop that never reaches the middle index.
TEST(MedianQuickselect, AgreesWithSortingOnEverySmallArray)
{
    for (int size = 1; size <= 7; ++size) {
        int combinations = 1;
        for (int i = 0; i < size; ++i)
            combinations *= 3;
        for (int code = 0; code < combinations; ++code) {
            std::vector<double> values;
            for (int i = 0, rest = code; i < size; ++i, rest /= 3)
                values.push_back(rest % 3);
            const double expected = sortedMedian(values);
            std::vector<double> work = values;
            ASSERT_EQ(HookPDFPageTextTool::findMedian(work.data(), size), expected) << show(values);
            std::sort(work.begin(), work.end());
            std::sort(values.begin(), values.end());
            ASSERT_EQ(work, values) << "reordered, but nothing lost or repeated";
        }
    }
}

// Character boxes of a broken PDF can hold NaN. The median of such heights
// or edges has no right answer, but it must end, give back one of the values
// and keep them all; this used to loop forever.
TEST(MedianQuickselect, EndsWithNaNAmongTheValues)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const std::vector<MedianCase> cases{
        {"NaN as the last element", {12, 10, nan}, 0},
        {"NaN first", {nan, 12, 10}, 0},
        {"two NaNs", {nan, 3, nan, 1}, 0},
        {"only NaNs", {nan, nan, nan}, 0},
        {"NaN with infinities", {inf, nan, -inf, 5, nan, 7}, 0},
    };
    const auto bits = [](double v) {
        uint64_t b;
        std::memcpy(&b, &v, sizeof b);
        return b;
    };
    for (const MedianCase& c : cases) {
        std::vector<double> values = c.values;
        const double median = HookPDFPageTextTool::findMedian(values.data(), int(values.size()));
        EXPECT_TRUE(std::any_of(c.values.begin(), c.values.end(), [&](double v) { return bits(v) == bits(median); }))
            << c.name;
        std::vector<uint64_t> before, after;
        for (std::size_t i = 0; i < values.size(); ++i) {
            before.push_back(bits(c.values[i]));
            after.push_back(bits(values[i]));
        }
        std::sort(before.begin(), before.end());
        std::sort(after.begin(), after.end());
        EXPECT_EQ(after, before) << c.name;
    }
}

struct PartitionCase {
    const char* name;
    std::vector<double> values;
    int low;
    int high;
};

TEST(MedianPartSort, PlacesTheLastElementOfTheRangeBetweenSmallerAndLarger)
{
    const std::vector<PartitionCase> cases{
        {"whole array", {3, 8, 1, 9, 4, 7, 5}, 0, 6},
        {"pivot is the largest", {3, 1, 2, 9}, 0, 3},
        {"pivot is the smallest", {3, 1, 2, 0}, 0, 3},
        {"duplicates of the pivot", {5, 2, 5, 8, 5, 1, 5}, 0, 6},
        {"sorted", {1, 2, 3, 4, 5, 6}, 0, 5},
        {"reversed", {6, 5, 4, 3, 2, 1}, 0, 5},
        {"inner range leaves the rest alone", {100, 7, 3, 9, 1, 5, -100}, 1, 5},
        {"two elements out of order", {2, 1}, 0, 1},
    };
    for (const PartitionCase& c : cases) {
        std::vector<double> values = c.values;
        const double pivot = values[std::size_t(c.high)];
        const int placed = int(HookPDFPageTextTool::PartSort(values.data(), c.low, c.high));
        ASSERT_GE(placed, c.low) << c.name;
        ASSERT_LE(placed, c.high) << c.name;
        EXPECT_EQ(values[std::size_t(placed)], pivot) << c.name;
        for (int i = c.low; i < placed; ++i)
            EXPECT_LE(values[std::size_t(i)], pivot) << c.name << " at " << i;
        for (int i = placed + 1; i <= c.high; ++i)
            EXPECT_GE(values[std::size_t(i)], pivot) << c.name << " at " << i;
        for (int i = 0; i < int(values.size()); ++i) {
            if (i < c.low || i > c.high) {
                EXPECT_EQ(values[std::size_t(i)], c.values[std::size_t(i)]) << c.name << " outside, at " << i;
            }
        }
        std::vector<double> before(c.values.begin() + c.low, c.values.begin() + c.high + 1);
        std::vector<double> after(values.begin() + c.low, values.begin() + c.high + 1);
        std::sort(before.begin(), before.end());
        std::sort(after.begin(), after.end());
        EXPECT_EQ(after, before) << c.name;
    }
}

TEST(MedianPartSort, EmptyOrSingleRangeReturnsItsLowIndexUntouched)
{
    const std::vector<PartitionCase> cases{
        {"single element", {4, 3, 2}, 1, 1},
        {"low above high", {4, 3, 2}, 2, 1},
    };
    for (const PartitionCase& c : cases) {
        std::vector<double> values = c.values;
        EXPECT_EQ(HookPDFPageTextTool::PartSort(values.data(), c.low, c.high), double(c.low)) << c.name;
        EXPECT_EQ(values, c.values) << c.name;
    }
}

}  // namespace
