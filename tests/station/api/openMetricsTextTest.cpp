#include "api/openMetricsText.h"

#include <gtest/gtest.h>

#include <limits>

TEST(OpenMetricsText, WritesFamiliesAndTheEnd)
{
    OpenMetricsText text;
    text.beginFamily("losses", OpenMetricsText::COUNTER, "Losses of the link.");
    text.add({{"link", QLatin1String("a")}}, 3);
    text.add({{"link", QLatin1String("b")}}, 0);
    text.beginFamily("reply_time_seconds", OpenMetricsText::HISTOGRAM, "Times.", "seconds");
    text.addPart("_bucket", {{"le", QLatin1String("0.5")}}, 2);
    EXPECT_EQ("# TYPE kakb_losses counter\n"
              "# HELP kakb_losses Losses of the link.\n"
              "kakb_losses_total{link=\"a\"} 3\n"
              "kakb_losses_total{link=\"b\"} 0\n"
              "# TYPE kakb_reply_time_seconds histogram\n"
              "# UNIT kakb_reply_time_seconds seconds\n"
              "# HELP kakb_reply_time_seconds Times.\n"
              "kakb_reply_time_seconds_bucket{le=\"0.5\"} 2\n"
              "# EOF\n",
              text.document());
}

TEST(OpenMetricsText, EscapesLabels)
{
    OpenMetricsText text;
    text.beginFamily("up", OpenMetricsText::GAUGE, "Up.");
    text.add({{"link", QString::fromUtf8("a\"b\\c\nd\xC3\xA4")}}, 0.25);
    EXPECT_TRUE(text.document().contains("kakb_up{link=\"a\\\"b\\\\c\\nd\xC3\xA4\"} 0.25\n"))
        << text.document().constData();
}

TEST(OpenMetricsText, NamesWhatIsNoNumber)
{
    OpenMetricsText text;
    text.beginFamily("x", OpenMetricsText::GAUGE, "X.");
    text.add({}, std::numeric_limits<double>::quiet_NaN());
    text.add({}, std::numeric_limits<double>::infinity());
    text.add({}, -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(text.document().endsWith("kakb_x NaN\nkakb_x +Inf\nkakb_x -Inf\n# EOF\n"));
}
