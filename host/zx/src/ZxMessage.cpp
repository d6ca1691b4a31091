#include "zx/ZxMessage.h"

#include "ZxFormat.h"
#include "zx/ZxThreadReports.h"

#include <cstdio>

std::string zxFormat(const char* format, std::va_list arguments)
{
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

ZxMessage* ZxMessage::getTheMsg()
{
  static ZxMessage instance;
  return &instance;
}

void ZxMessage::printf(const char* format, ...)
{
  std::va_list arguments;
  va_start(arguments, format);
  std::string line = zxFormat(format, arguments);
  va_end(arguments);
  if (!line.empty() && line.back() == '\n') line.pop_back();
  const ZxThreadReports* own = ZxThreadReports::ofThisThread();
  if (const Sink& sink = own ? own->sink() : m_sink)
    sink(line);
  else
    std::fprintf(stderr, "%s\n", line.c_str());
}

void ZxMessage::memError(std::size_t bytes)
{
  ++m_memErrors;
  printf("Not enough memory: %zu bytes could not be allocated.", bytes);
}

ZxMessage::Sink ZxMessage::setSink(Sink sink)
{
  std::swap(m_sink, sink);
  return sink;
}
