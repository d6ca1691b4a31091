// Entry points of the package.
#include "zx/ZxPackage.h"
#include "zxalign/AlignEditorFactory.h"
#include "zxalign/AlignRecovery.h"
#include "zxalign/RecoveryQuestion.h"
#include "zxalign/ZxAlignEditor.h"
#include "zxalign/ZxAlignSlices.h"

extern "C" {

/// Registers the classes of the package and how editor windows are made, once.
void orvelpackage_zxalign_init();
/// Ends the package, once. The classes stay registered: libraries are never unloaded.
void orvelpackage_zxalign_finish();
/// The number of the host interface that the package was built against.
int orvelpackage_zxalign();

void orvelpackage_zxalign_init()
{
  static bool done = false;
  if (done) return;
  done = true;
  ZxAlignSlices::initClass();
  ZxAlignEditor::setFactory(&makeAlignEditor);
  AlignRecovery::setQuestion(&askToRestore);
  AlignRecovery::setWanted(&isAnybodyAtTheWindow);
}

void orvelpackage_zxalign_finish()
{
  static bool done = false;
  done = true;
  static_cast<void>(done);
}

int orvelpackage_zxalign() { return kZxBuildId; }

[[gnu::constructor]] void soconstructor_zxalign();
[[gnu::destructor]] void sodestructor_zxalign();

void soconstructor_zxalign() { orvelpackage_zxalign_init(); }
void sodestructor_zxalign() { orvelpackage_zxalign_finish(); }
}
