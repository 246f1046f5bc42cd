// Records of a dialog's controls.
#pragma once

#include "tarvix/dialog.h"

/// Deletes a record and its control; null is ignored.
void FreeGuiCtrl(TGuiCtrl *pGuiCtrl);
