#pragma once

class ZxAutoAlignMethodFabrique;

/// Number of the interface between the package and its plug-ins. It rises with every change of a class, of
/// the package or of the host, that plug-ins are compiled against.
inline constexpr int kZxAlignPlugInInterface = 2;

/// The entry symbol of a plug-in: an extern "C" function that registers its methods.
using ZxAlignPlugInEntry = void (*)(ZxAutoAlignMethodFabrique* registry);

/// Every library that includes this header carries the number it was built with under this symbol, where the
/// package reads it before it calls anything. Weak, so that several sources of a library may include it; no
/// inline variable, because the loader merges those of all libraries into one.
#ifndef ZXALIGN_BUILDS_PACKAGE // The package is no plug-in: a look-up in a plug-in must not find its number.
extern "C" {
[[gnu::weak, gnu::visibility("default")]] extern const int zxalign_plugin_interface;
const int zxalign_plugin_interface = kZxAlignPlugInInterface;
}
#endif
