#pragma once

class QString;
class QWidget;

/// What becomes of an alignment that is not stored.
enum class AlignSaveAnswer { Save, DontSave, Cancel, None };

/// Asks, modal over a widget. Escape is Cancel; None when the question went away unanswered.
AlignSaveAnswer askToSaveAlignment(QWidget* parent, const QString& inputName);
