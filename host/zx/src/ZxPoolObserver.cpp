#include "zx/ZxPoolObserver.h"

#include "zx/ZxObjectPool.h"

ZxPoolObserver::ZxPoolObserver() { ZxObjectPool::getThePool().m_observers.push_back(this); }

ZxPoolObserver::~ZxPoolObserver() { std::erase(ZxObjectPool::getThePool().m_observers, this); }
