#include "AlignSavePrompt.h"

#include "qx/QxMainWindow.h"
#include "zx/ZxMessage.h"
#include "zx/ZxSkin.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

AlignSaveAnswer askToSaveAlignment(QWidget* parent, const QString& inputName)
{
  const QxMainWindow* host = QxMainWindow::getTheMainWindow();
  if (host && !host->isVisible()) { // Nobody is there who could answer. The module keeps the alignment.
    ZxMessage::getTheMsg()->printf("The alignment of %s has changes that are not stored in its parameters.",
                                   inputName.toUtf8().constData());
    return AlignSaveAnswer::DontSave;
  }
  const QString caption = QString::fromStdString(ZxSkin::getGlobalInstance()->getCaption("Main"));
  const QPointer<QMessageBox> box(new QMessageBox(parent)); // The parent may go away while it is open.
  box->setObjectName(QStringLiteral("alignSavePrompt"));
  box->setIcon(QMessageBox::Information);
  box->setTextFormat(Qt::PlainText);
  box->setWindowTitle(caption + QStringLiteral(" - AlignSlices"));
  box->setText(QStringLiteral("Transformation matrices have been modified.\n"
                              "Do you want to save these changes in %1?")
                   .arg(inputName));
  QPushButton* save = box->addButton(QStringLiteral("&Save"), QMessageBox::AcceptRole);
  const QPushButton* dontSave = box->addButton(QStringLiteral("&Don't Save"), QMessageBox::DestructiveRole);
  QPushButton* cancel = box->addButton(QStringLiteral("&Cancel"), QMessageBox::RejectRole);
  box->setDefaultButton(save);
  box->setEscapeButton(cancel);
  box->exec();
  if (!box) return AlignSaveAnswer::None;
  // By button: their order on the screen is the platform's.
  const QAbstractButton* clicked = box->clickedButton();
  const AlignSaveAnswer answer = clicked == save       ? AlignSaveAnswer::Save
                                 : clicked == dontSave ? AlignSaveAnswer::DontSave
                                 : clicked == cancel   ? AlignSaveAnswer::Cancel
                                                       : AlignSaveAnswer::None;
  delete box.data();
  return answer;
}
