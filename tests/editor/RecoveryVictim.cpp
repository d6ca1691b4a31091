// Edits the alignment of "a volume that was read from" argv[1] until it is killed, and says what it does:
// "begun 7" before the seventh edit, "kept 7" as soon as nothing is waiting to be written any more.
#include "support/Volumes.h"
#include "zxalign/AlignRecovery.h"
#include "zxalign/ZxAlignSlices.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
  const QCoreApplication application(argc, argv);
  const McHandle<ZxField3> stack =
      makeField<std::uint8_t>({12, 9, 40}, 1, [](int x, int y, int k, int) { return x + y + k; });
  stack->setFileName(argc > 1 ? argv[1] : "stack.tif");
  const McHandle<ZxAlignSlices> module = mcMake<ZxAlignSlices>();
  module->recovery().setInterval(std::chrono::milliseconds(1));
  if (!module->portData.connect(stack.get())) return 1;
  module->fire();
  for (int edit = 1;; ++edit) {
    std::printf("begun %d\n", edit);
    module->undoRedo().saveState();
    for (SliceInfo& slice : module->slices()) slice.translationX = static_cast<float>(edit);
    do QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    while (module->recovery().isPending());
    std::printf("kept %d\n", edit);
    std::fflush(stdout);
  }
}
