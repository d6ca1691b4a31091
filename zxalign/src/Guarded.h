#pragma once

#include <exception>
#include <new>
#include <string>

/// Calls code that may be of others: what it throws ends here. Empty, or what went wrong.
template <class Call>
std::string guarded(Call call)
{
  try {
    call();
    return {};
  } catch (const std::bad_alloc&) {
    return "there is not enough memory";
  } catch (const std::exception& error) {
    return *error.what() ? error.what() : "an exception without a text";
  } catch (...) {
    return "an exception of an unknown type";
  }
}
