#pragma once

#include <QSettings>

/// The settings file of the program, the one in which the preferences are, too.
class QxSettings : public QSettings {
public:
  QxSettings() : QSettings("zxalign", "orvel") {}
};
