#pragma once
// The one-time move of the gallery list from the previous generation's folder.

namespace marrowfin {

// Runs only while <root>/Show.xml is missing: unless <doc>/Pellicor/version.ini
// says [BrindleMoved] flag=1, copies <doc>/Pellicor/Show.xml to <root> without
// overwriting and sets the flag, copied or not. Nothing else there is touched.
void MoveFromPreviousGeneration();

}  // namespace marrowfin
