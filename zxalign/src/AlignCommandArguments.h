#pragma once

/// Arguments of the module's commands as numbers. They are read leniently, deliberately: what follows the
/// number is ignored, and a word that is none is 0.

/// A whole number to base 10; the nearest int where it is too large.
int alignInteger(const char* word);
/// A real number, also in hexadecimal; not a number, and infinity where it is too large, stay what they are.
float alignReal(const char* word);
bool alignFlag(const char* word);
