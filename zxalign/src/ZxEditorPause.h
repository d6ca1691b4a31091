#pragma once

#include "zxalign/ZxAlignEditor.h"

/// While it lives, the slice view of an editor shows nothing of what changes. The editor may be null, and
/// outlives this object.
class ZxEditorPause {
public:
  explicit ZxEditorPause(ZxAlignEditor* editor) : m_editor(editor)
  {
    if (m_editor) m_editor->suspendUpdates();
  }
  ~ZxEditorPause()
  {
    if (m_editor) m_editor->resumeUpdates();
  }
  ZxEditorPause(const ZxEditorPause&) = delete;
  ZxEditorPause& operator=(const ZxEditorPause&) = delete;

private:
  ZxAlignEditor* m_editor; // borrowed
};
