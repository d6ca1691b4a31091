#include "zxalign/UpdateOrthogonalViewsThread.h"

#include "zxalign/QxOrthoViewManager.h"

UpdateOrthogonalViewsThread::UpdateOrthogonalViewsThread(QxOrthoViewManager* manager)
  : ZxThread(&threadCallback), m_manager(manager)
{
}

UpdateOrthogonalViewsThread::~UpdateOrthogonalViewsThread()
{
  stop();
  wait();
}

void UpdateOrthogonalViewsThread::setUpdateRange(int first, int last)
{
  m_first = first;
  m_last = last;
}

void UpdateOrthogonalViewsThread::setUpdateFreq(int columns) { m_updateFrequency = columns; }

void UpdateOrthogonalViewsThread::threadCallback(void* manager)
{
  static_cast<QxOrthoViewManager*>(manager)->updateImageData();
}

void UpdateOrthogonalViewsThread::run()
{
  int count = 0;
  for (int z = m_first; z <= m_last; ++z) {
    if (m_manager->updateLine(z)) ++count;
    if (count != 0 && count % m_updateFrequency == 0) callThreadCallback(m_manager);
    if (isStopRequested()) break;
  }
  callThreadCallback(m_manager);
}
