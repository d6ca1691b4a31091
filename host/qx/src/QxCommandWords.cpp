#include "QxCommandWords.h"

#include "QxTcl.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"

namespace {

QStringList firstWords()
{
  QStringList words;
  const QxTcl::Result commands = QxTcl::eval("info commands");
  for (const std::string& command :
       ZxInterpreter::splitList(commands.text.c_str()).value_or(std::vector<std::string>()))
    words << QString::fromStdString(command);
  for (const McHandle<ZxObject>& o : ZxObjectPool::getThePool().objects())
    words << QString::fromStdString(o->getLabel().str());
  words.sort();
  return words;
}

QStringList wordsOf(const ZxObject& object)
{
  QStringList words{"getLabel", "getTypeId", "setLabel"};
  if (dynamic_cast<const ZxData*>(&object))
    words << "parameters"
          << "save";
  if (const auto* module = dynamic_cast<const ZxModule*>(&object)) {
    words << "fire"
          << "ports"
          << "result";
    for (const ZxPort* port : module->getPorts()) words << QString::fromStdString(port->getName());
  }
  words.sort();
  return words;
}

QStringList wordsOf(const ZxPort& port)
{
  if (dynamic_cast<const ZxConnection*>(&port)) return {"connect"};
  if (dynamic_cast<const ZxPortButtonList*>(&port)) return {"hit"};
  return {"getValue", "setValue"};
}

QStringList sourcesFor(const ZxConnection& connection)
{
  QStringList words{"none"};
  for (const McHandle<ZxObject>& o : ZxObjectPool::getThePool().objects())
    if (connection.accepts(*o)) words << QString::fromStdString(o->getLabel().str());
  return words;
}

} // namespace

namespace QxCommandWords {

QStringList candidates(const QStringList& wordsBefore)
{
  if (wordsBefore.isEmpty()) return firstWords();
  const ZxObject* object = ZxObjectPool::getThePool().find(wordsBefore.first().toStdString());
  if (!object) return firstWords(); // Arguments of commands are names of objects mostly.
  if (wordsBefore.size() == 1) return wordsOf(*object);
  const auto* module = dynamic_cast<const ZxModule*>(object);
  const ZxPort* port = module ? module->findPort(wordsBefore[1].toStdString()) : nullptr;
  if (!port) return {};
  if (wordsBefore.size() == 2) return wordsOf(*port);
  const auto* connection = dynamic_cast<const ZxConnection*>(port);
  return connection && wordsBefore.size() == 3 ? sourcesFor(*connection) : QStringList();
}

} // namespace QxCommandWords
