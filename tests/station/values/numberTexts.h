#ifndef NUMBER_TEXTS_H
#define NUMBER_TEXTS_H

/// A text where JSON has a number, for a tag of the type float32.
struct NumberText
{
    enum Verdict {
        FITS,
        NOT_JSON, ///< "is not JSON: the number TEXT is not JSON"
        TOO_LARGE ///< "a number of this size does not fit float32…"
    };

    const char* text;
    Verdict verdict;
};

/// Whoever takes a value from outside judges these alike (RFC 8259, 6).
const NumberText NUMBER_TEXTS[] = {
    {"0", NumberText::FITS},          {"-0.0", NumberText::FITS},
    {"2.5E0", NumberText::FITS},      {"1e-400", NumberText::FITS}, // nearest to 0
    {"1e+2", NumberText::FITS},       {".5", NumberText::NOT_JSON},
    {"-.5", NumberText::NOT_JSON},    {"1.", NumberText::NOT_JSON},
    {"1.e3", NumberText::NOT_JSON},   {"+1", NumberText::NOT_JSON},
    {"01", NumberText::NOT_JSON},     {"1e", NumberText::NOT_JSON},
    {"-", NumberText::NOT_JSON},      {"1e400", NumberText::TOO_LARGE},
    {"2e308", NumberText::TOO_LARGE}, {"-1E999", NumberText::TOO_LARGE},
};

#endif
