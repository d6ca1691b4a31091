#pragma once

#include <memory>

class ZxAlignEditor;
class ZxAlignSlices;

/// The editor window of a module, as a page of the main window; null in a program without one.
std::unique_ptr<ZxAlignEditor> makeAlignEditor(ZxAlignSlices& module);
