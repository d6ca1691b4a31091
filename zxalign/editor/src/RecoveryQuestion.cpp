#include "zxalign/RecoveryQuestion.h"

#include "qx/QxMainWindow.h"
#include "zx/ZxSkin.h"
#include "zxalign/AlignRecovery.h"

#include <QMessageBox>
#include <QPushButton>

bool isAnybodyAtTheWindow()
{
  const QxMainWindow* window = QxMainWindow::getTheMainWindow();
  return window && window->isVisible();
}

bool askToRestore(AlignRecovery& recovery, const QString& text)
{
  if (!isAnybodyAtTheWindow()) return false;
  QxMainWindow* window = QxMainWindow::getTheMainWindow();
  const QString caption = QString::fromStdString(ZxSkin::getGlobalInstance()->getCaption("Main"));
  auto* box = new QMessageBox(QMessageBox::Question, caption + " - AlignSlices",
                              text + "\n\nDo you want to restore it?", QMessageBox::NoButton, window);
  box->setObjectName("recoveryQuestion");
  box->setAttribute(Qt::WA_DeleteOnClose);
  QPushButton* restore = box->addButton("&Restore", QMessageBox::AcceptRole);
  QPushButton* discard = box->addButton("&Discard", QMessageBox::DestructiveRole);
  box->setDefaultButton(restore);
  // Whoever closes the question decides later.
  box->setEscapeButton(box->addButton("&Later", QMessageBox::RejectRole));
  QObject::connect(restore, &QPushButton::clicked, &recovery, &AlignRecovery::restore);
  QObject::connect(discard, &QPushButton::clicked, &recovery, &AlignRecovery::discardOffer);
  QObject::connect(&recovery, &QObject::destroyed, box, &QWidget::close);
  box->open();
  return true;
}
