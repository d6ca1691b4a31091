#pragma once

#include <string>

/// Names and places that belong to the program as a product: captions of its windows, its help files.
class ZxSkin {
public:
  static ZxSkin* getGlobalInstance();

  /// The caption of a window: "Main" gives the program's name. Unknown names are their own caption.
  std::string getCaption(const std::string& window) const;
  /// Path of a help file of a package, whether or not it exists: in the folder "help" beside the package's
  /// library, or in the folder that setHelpFolder() gave.
  std::string getPathToHelpFile(const std::string& package, const std::string& file) const;
  /// Where help files are looked for first. Empty: beside the package only.
  void setHelpFolder(std::string folder) { m_helpFolder = std::move(folder); }

private:
  ZxSkin() = default;
  std::string m_helpFolder;
};
