#pragma once
// Every radio family the program speaks, by the supplier letter of the catalogue. A new family is one
// folder under protocols/ and one line in Families.cpp.

namespace tv {

class SelectedRadio;

void registerFamilies(SelectedRadio& radio);

}  // namespace tv
