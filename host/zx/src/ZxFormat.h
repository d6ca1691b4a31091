#pragma once

#include <cstdarg>
#include <string>

/// The text that printf would print.
[[gnu::format(printf, 1, 0)]] std::string zxFormat(const char* format, std::va_list arguments);
