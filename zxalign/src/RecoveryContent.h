#pragma once

#include "zx/ZxBox3.h"
#include "zxalign/AlignHistory.h"

#include <QString>

#include <optional>
#include <string>

/// Which data a kept alignment belongs to: their file and their size.
struct RecoveryKey {
  std::string path; ///< absolute, without links; empty when the data have no file
  ZxDims dims;

  /// As one text.
  std::string text() const;
  friend bool operator==(const RecoveryKey& a, const RecoveryKey& b) = default;
};

/// What a recovery file holds.
struct RecoveryContent {
  RecoveryKey key;
  QString time; ///< when it was written, ISO 8601 with the local offset
  AlignState state;
};

/// As JSON: numbers come back exactly. A value that is no number (NaN) comes back as 0.
std::string encodeRecovery(const RecoveryContent& content);
/// None where the bytes are damaged or hold another number of slices than they say.
std::optional<RecoveryContent> decodeRecovery(const std::string& bytes);
