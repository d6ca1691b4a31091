#include "zx/ZxSkin.h"

#include "zx/ZxPackage.h"

#include <filesystem>

ZxSkin* ZxSkin::getGlobalInstance()
{
  static ZxSkin skin;
  return &skin;
}

std::string ZxSkin::getCaption(const std::string& window) const
{
  return window == "Main" ? "Orvel" : window;
}

std::string ZxSkin::getPathToHelpFile(const std::string& package, const std::string& file) const
{
  const std::filesystem::path configured = std::filesystem::path(m_helpFolder) / file;
  std::error_code error;
  if (!m_helpFolder.empty() && std::filesystem::exists(configured, error)) return configured.string();
  return (std::filesystem::path(ZxPackage::folder(package)) / "help" / file).string();
}
