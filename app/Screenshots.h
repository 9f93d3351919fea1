#pragma once
// Pictures of the windows for the documentation, taken from a running demo.

#include <QString>

namespace tv {

class Program;
class Windows;

// Opens every window side by side, lets the radio speak, saves each window and tab into folder, then
// ends the program.
void TakeScreenshots(Program& program, Windows& windows, const QString& folder);

}  // namespace tv
