#pragma once

class Camera;
class Stage;

/// The main window: empty, with a stack, with the module attached to it, with a result, and the help browser.
/// The stack is selected and the module attached as "align" in the end.
void takeDesktop(Stage& stage, const Camera& tour, const Camera& manual, const char* stack);
/// The editor of the module "align": ways of display, menus, landmarks, orthogonal views, options.
void takeEditor(Stage& stage, const Camera& manual);
/// Changes the alignment of a stack and waits until the change is in the recovery file.
void leaveUnsaved(Stage& stage, const char* stack);
/// The question about what leaveUnsaved() has left.
void takeRecovery(Stage& stage, const Camera& manual, const char* stack);
