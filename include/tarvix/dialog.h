#pragma once

#include "tarvix/winctrl.h"
#include "tarvix/window.h"

class CBitmap;
class CResData;

/// Kinds of controls in a dialog.
enum
{
    XDLG_STATIC = 0,
    XDLG_BUTTON = 1,
    XDLG_PROGRESS = 2,
    XDLG_GROUPBOX = 3,
    XDLG_RADIOBUTTON = 4,
    XDLG_SLIDER = 5,
    XDLG_COMBOBOX = 6,
    XDLG_EDIT = 7,
    XDLG_CHECKBOX = 8,
    XDLG_SCROLLTEXT = 9,
    XDLG_TIMEOUT = 10,
    XDLG_LISTBOX = 11,
    XDLG_MULTIEDIT = 12,
    XDLG_URL = 13
};

/// A control that a dialog has made.
struct TGuiCtrl
{
    xlong lType; ///< XDLG_...
    xlong lID;
    CControlBase *pCtrl; ///< owned by the dialog
};

/// A window with its controls, built from the "Window" chunk of a resource
/// script. The resource must outlive it: texts, pictures, fonts and colours
/// stay there.
class TARVIX_API CDialog : public CWindow
{
public:
    CDialog();
    ~CDialog() override;

    using CWindow::Create;
    /// Builds the window and hands it to the manager.
    /// @param lID          of the window, by its name in "Defines"
    /// @param pfnCallback  may be null
    /// @param lFlags       bit 0: starts hidden
    /// @return 0 with a text; no window is in the manager then
    xlong Create(CResData *pRes, xlong lID, TGuiCallback pfnCallback, xlong lFlags, void *pUser);
    /// Takes the window out of the manager and deletes all controls. Not from
    /// a callback of the window itself: hide it there.
    xlong Destroy();
    /// @return the control of that id, or null; for -1 the current one if its id is -1
    CControlBase *GetCtrl(xlong lID);
    /// @return the record of that id, or null; for -1 the current one
    TGuiCtrl *GetGuiCtrl(xlong lID);
    /// Walk of the controls, in the order of the script.
    xlong First();
    xlong Next();
    xlong Exists();
    /// @param pszText  kept, not copied
    /// @return 0 when there is no such control
    xlong SetText(xlong lID, char *pszText);
    /// @param bValidate  1: the caller is about to write to it
    /// @return null when there is no such control or text
    char *GetTextBuffer(xlong lID, xlong bValidate);
    xlong GetTextBufferSize(xlong lID);

    CLList m_GuiCtrls; ///< of TGuiCtrl, owned, in the order of creation

protected:
    // Builders, one for each word. They read the current chunk and return 0
    // with a text when it can't be built.
    xlong GetTitlebar(CResData *pRes);
    xlong GetFrame(CResData *pRes);
    xlong GetStatic(CResData *pRes, TGuiCtrl *pGuiCtrl);
    xlong GetScrolltext(CResData *pRes, TGuiCtrl *pGuiCtrl);
    /// The short form, which is an item of the window.
    xlong GetCreateStatic(CResData *pRes, TGuiCtrl *pGuiCtrl);
    xlong GetButton(CResData *pRes, TGuiCtrl *pGuiCtrl);
    xlong GetGroupbox(CResData *pRes, TGuiCtrl *pGuiCtrl);
    xlong GetRadiobtn(CResData *pRes, TGuiCtrl *pGuiCtrl);
    xlong GetCheckbox(CResData *pRes, TGuiCtrl *pGuiCtrl);
    xlong GetURL(CResData *pRes, TGuiCtrl *pGuiCtrl);
    /// The items that all controls have.
    /// @param pszTypeWord  for the error texts
    xlong GetCommon(CResData *pRes, TGuiCtrl *pGuiCtrl, const char *pszTypeWord);
    /// The four bitmaps of the current item.
    xlong SetBitmaps(CResData *pRes, CControlBase *pCtrl);
    xlong GetBitmaps(CResData *pRes, CBitmap *&pReleased, CBitmap *&pPressed, CBitmap *&pHighlight,
                     CBitmap *&pDisabled);
    /// Builds the control of the current item.
    /// @param pOut     receives it, or null for an item that is no control; after
    ///                 a failure what was made so far
    /// @param pParent  the control that it is in, or null
    /// @return 0 for success, 1 for failure
    xlong GetCntrl(CResData *pRes, TGuiCtrl *&pOut, TGuiCtrl *pParent);

private:
    xlong GetCaption(CResData *pRes, TGuiCtrl *pGuiCtrl, CControlBase *pCaption, const char *pszTypeWord);
    xlong GetChildren(CResData *pRes, TGuiCtrl *pGuiCtrl);
    xlong BuildWindow(CResData *pRes, xlong lID);
};
