#include "api/openMetricsText.h"

#include <charconv>
#include <cmath>

namespace {

enum { LONGEST_NUMBER = 32 };

const char* typeText(OpenMetricsText::Type type)
{
    switch (type) {
    case OpenMetricsText::COUNTER:
        return "counter";
    case OpenMetricsText::HISTOGRAM:
        return "histogram";
    case OpenMetricsText::INFO:
        return "info";
    case OpenMetricsText::GAUGE:
        break;
    }
    return "gauge";
}

/// OpenMetrics 1.0, "Escaping".
QByteArray escaped(const QString& text)
{
    return text.toUtf8().replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n");
}

QByteArray numberText(double value)
{
    if (std::isnan(value)) return QByteArrayLiteral("NaN");
    if (std::isinf(value)) return QByteArray(value > 0 ? "+Inf" : "-Inf");
    char digits[LONGEST_NUMBER];
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, value);
    return QByteArray(digits, int(result.ptr - digits));
}

QByteArray labelsText(const OpenMetricsText::Labels& labels)
{
    QByteArray text;
    for (const auto& label : labels)
        text += QByteArray(text.isEmpty() ? "{" : ",") + label.first + "=\"" +
                escaped(label.second) + '"';
    return text.isEmpty() ? text : text + '}';
}

} // namespace

const char OpenMetricsText::CONTENT_TYPE[] =
    "application/openmetrics-text; version=1.0.0; charset=utf-8";

void OpenMetricsText::beginFamily(const char* name, Type type, const char* help, const char* unit)
{
    m_name = QByteArrayLiteral("kakb_") + name;
    m_type = type;
    m_text += "# TYPE " + m_name + ' ' + typeText(type) + '\n';
    if (*unit) m_text += "# UNIT " + m_name + ' ' + unit + '\n';
    m_text += "# HELP " + m_name + ' ' + help + '\n';
}

void OpenMetricsText::add(const Labels& labels, double value)
{
    addPart(m_type == COUNTER ? "_total" : m_type == INFO ? "_info" : "", labels, value);
}

void OpenMetricsText::addPart(const char* suffix, const Labels& labels, double value)
{
    m_text += m_name + suffix + labelsText(labels) + ' ' + numberText(value) + '\n';
}

QByteArray OpenMetricsText::document() const
{
    return m_text + "# EOF\n";
}
