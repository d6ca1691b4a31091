#include "zxalign/AlignHistory.h"

#include <utility>

void AlignHistory::save(AlignState present)
{
  push(m_undo, std::move(present));
  if (m_undo.size() >= 2 && m_undo.back() == m_undo[m_undo.size() - 2]) m_undo.pop_back();
}

std::optional<AlignState> AlignHistory::undo(AlignState present)
{
  return step(m_undo, m_redo, std::move(present));
}

std::optional<AlignState> AlignHistory::redo(AlignState present)
{
  return step(m_redo, m_undo, std::move(present));
}

void AlignHistory::clear() noexcept
{
  m_undo.clear();
  m_redo.clear();
}

void AlignHistory::push(Stack& stack, AlignState state)
{
  if (stack.size() >= limit) stack.erase(stack.begin());
  stack.push_back(std::move(state));
}

std::optional<AlignState> AlignHistory::step(Stack& from, Stack& to, AlignState present)
{
  if (from.empty()) return std::nullopt;
  push(to, std::move(present));
  std::optional<AlignState> state = std::move(from.back());
  from.pop_back();
  return state;
}
