#include "LogText.h"
#include "log/ExchangeSink.h"
#include "log/LatencyTable.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace hexmire::program {
namespace {

using fakes::LogText;
using fakes::ReadWhole;

std::string Table(const std::string& text, bool json, LogFilter filter = {}) {
    std::ostringstream out;
    ExchangeSink sink(out, {.Filter = std::move(filter), .Latency = true, .Json = json});
    static_cast<void>(ReadWhole(sink, text));
    return out.str();
}

TEST(LatencyHistogram, quantile_is_the_least_time_that_enough_do_not_exceed) {
    LatencyHistogram times;
    EXPECT_EQ(times.Quantile(50), 0);
    for (const LogTime time : {40, 10, 30, 20})
        times.Add(time);
    EXPECT_EQ(times.Quantile(50), 20);
    EXPECT_EQ(times.Quantile(75), 30);
    EXPECT_EQ(times.Quantile(76), 40);
    EXPECT_EQ(times.Quantile(99), 40);
    EXPECT_EQ(times.Max(), 40);
    EXPECT_EQ(times.Count(), 4U);
}

TEST(LatencyHistogram, every_time_below_20_seconds_is_told_exactly) {
    for (LogTime time = 0; time < 2048; ++time) {
        LatencyHistogram times;
        times.Add(time);
        times.Add(LatencyTable::kLongest);
        EXPECT_EQ(times.Quantile(50), time);
    }
}

TEST(LatencyHistogram, longer_times_are_told_up_to_a_64th_too_long_and_never_too_short) {
    for (LogTime time = 2048; time <= LatencyTable::kLongest; time += 7) {
        LatencyHistogram times;
        times.Add(time);
        times.Add(10 * LatencyTable::kLongest);
        EXPECT_GE(times.Quantile(50), time);
        EXPECT_LE(times.Quantile(50), time + time / 64);
    }
}

TEST(LatencyHistogram, agrees_with_sorting_on_many_times) {
    LatencyHistogram times;
    std::vector<LogTime> all;
    std::uint32_t random = 1;
    for (int i = 0; i < 10'000; ++i) {
        random = random * 1'664'525 + 1'013'904'223;
        all.push_back(random >> 22);
        times.Add(all.back());
    }
    std::sort(all.begin(), all.end());
    EXPECT_EQ(times.Quantile(50), all[4'999]);
    EXPECT_EQ(times.Quantile(99), all[9'899]);
    EXPECT_EQ(times.Max(), all.back());
}

TEST(LatencyTable, row_for_each_message_and_direction) {
    LogText text;
    for (unsigned i = 0; i < 100; ++i) {
        text.Message("Send", 0x81, 1, i).Wait(static_cast<int>(i)).Message("Received", 1, 2, i);
    }
    text.Message("Send", 0x81, 1, 200).Message("Send", 6, 11, 300).Message("Received", 0x81, 1, 1);
    text.Wait(3).Message("Reply", 1, 2, 1);
    EXPECT_EQ(Table(text.Text(), false),
              "primary   direction       count    expected    answered  median ms    99 % ms     "
              "max ms\n"
              "S1F1      sent              101         101         100        490        980      "
              "  990\n"
              "S1F1      received            1           1           1         30         30      "
              "   30\n"
              "S6F11     sent                1           0           0          -          -      "
              "    -\n");
}

TEST(LatencyTable, row_is_a_json_object) {
    EXPECT_EQ(Table(LogText()
                        .Message("Send", 0x81, 1, 1)
                        .Wait(12)
                        .Message("Received", 1, 2, 1)
                        .Message("Received", 0x86, 11, 1)
                        .Text(),
                    true),
              "{\"event\":\"latency\",\"stream\":1,\"function\":1,\"direction\":\"sent\","
              "\"count\":1,\"expected\":1,\"answered\":1,\"median_ms\":120,\"p99_ms\":120,"
              "\"max_ms\":120}\n"
              "{\"event\":\"latency\",\"stream\":6,\"function\":11,\"direction\":\"received\","
              "\"count\":1,\"expected\":1,\"answered\":0,\"median_ms\":null,\"p99_ms\":null,"
              "\"max_ms\":null}\n");
}

TEST(LatencyTable, time_over_a_change_of_the_clock_is_not_reckoned) {
    for (const int change : {-360'000, 360'000}) {
        const std::string json = Table(
            LogText().Message("Send", 0x81, 1, 1).Wait(change).Message("Received", 1, 2, 1).Text(),
            true);
        EXPECT_NE(json.find("\"answered\":1,\"median_ms\":null"), std::string::npos) << json;
    }
}

TEST(LatencyTable, filter_chooses_primaries) {
    const std::string json = Table(LogText()
                                       .Message("Send", 0x81, 1, 1)
                                       .Wait(10)
                                       .Message("Received", 1, 2, 1)
                                       .Message("Send", 0x82, 17, 2)
                                       .Text(),
                                   true,
                                   {.Messages = {{.Stream = 1, .Function = 1}}});
    EXPECT_EQ(std::count(json.begin(), json.end(), '\n'), 1);
    EXPECT_NE(json.find("\"median_ms\":100"), std::string::npos);
}

TEST(LatencyTable, rows_are_bounded) {
    LatencyTable table;
    LogEntry primary;
    for (std::int32_t i = 0; i < 2'000; ++i) {
        primary.Facts.Name = {.Stream = i / 200, .Function = i % 200};
        table.AddPrimary(primary);
        table.AddReply(primary, 1);
    }
    EXPECT_EQ(table.Beyond(), 2'000 - LatencyTable::kMostRows);
    std::ostringstream out;
    table.PrintJson(out);
    const std::string rows = out.str();
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), LatencyTable::kMostRows);
}

}  // namespace
}  // namespace hexmire::program
