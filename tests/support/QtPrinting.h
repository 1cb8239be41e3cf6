#pragma once

#include <QString>

#include <ostream>

// Makes a failed expectation show texts as texts; it is found beside QString.
inline void PrintTo(const QString &text, std::ostream *stream)
{
    *stream << '"' << text.toStdString() << '"';
}
