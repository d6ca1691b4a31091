// Takes the pictures of the manual: started by docs/make-screenshots, which gives it a screen and folders of
// its own.
//
//   screenshots tour STACK TOUR-FOLDER MANUAL-FOLDER
//   screenshots crash STACK                           leaves an alignment unsaved, as after a crash
//   screenshots recovery STACK MANUAL-FOLDER          the question about it
#include "Camera.h"
#include "Scenes.h"
#include "Stage.h"

#include <QApplication>
#include <QFont>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

namespace {

/// Looks that do not depend on whose machine it is.
void setLooks()
{
  QApplication::setStyle("Fusion");
  QApplication::setFont(QFont("DejaVu Sans", 9));
  QApplication::setCursorFlashTime(0);
}

void takeTour(const QStringList& words)
{
  Stage stage;
  const QByteArray stack = words[2].toUtf8();
  takeDesktop(stage, Camera(words[3]), Camera(words[4]), stack.constData());
  takeEditor(stage, Camera(words[4]));
}

bool run(const QStringList& words)
{
  const QString scene = words.value(1);
  const QByteArray stack = words.value(2).toUtf8();
  if (scene == "tour" && words.size() == 5)
    takeTour(words);
  else if (scene == "crash" && words.size() == 3)
    leaveUnsaved(*new Stage, stack.constData()); // never ended in good order
  else if (scene == "recovery" && words.size() == 4)
    takeRecovery(*new Stage, Camera(words[3]), stack.constData());
  else
    return false;
  return true;
}

} // namespace

int main(int argc, char** argv)
{
  QApplication application(argc, argv);
  QCoreApplication::setApplicationName("orvel");
  setLooks();
  if (!run(QCoreApplication::arguments())) {
    std::fprintf(stderr, "screenshots: start docs/make-screenshots instead.\n");
    return EXIT_FAILURE;
  }
  std::fflush(nullptr);
  std::_Exit(EXIT_SUCCESS); // What is unsaved stays so, and nobody is asked.
}
