#include "Camera.h"
#include "Scenes.h"
#include "Stage.h"

#include <QDir>
#include <QStandardPaths>

namespace {

void attach(Stage& stage, const char* stack)
{
  stage.open(stack);
  stage.script("create ZxAlignSlices align; align data connect stack.nrrd; align fire");
}

bool hasRecoveryFile()
{
  const QString folder = qEnvironmentVariable("XDG_STATE_HOME") + "/zxalign/recovery";
  return !QDir(folder).entryList({"*.json"}).isEmpty();
}

} // namespace

void leaveUnsaved(Stage& stage, const char* stack)
{
  attach(stage, stack);
  stage.script("align edit; align setTransform 20 5 3 1 0");
  Stage::waitFor("the recovery file", hasRecoveryFile);
}

void takeRecovery(Stage& stage, const Camera& manual, const char* stack)
{
  attach(stage, stack);
  QWidget& question = stage.find("recoveryQuestion");
  Stage::waitFor("the question", [&question] { return question.isVisible(); });
  manual.takeWidget("recovery", question);
}
