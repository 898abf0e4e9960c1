#pragma once

#include "app/base/Messages.h"
#include "app/look/WindowPointer.h"
#include "preview/PreviewPicture.h"
#include "preview/Printing.h"
#include "preview/SaveFileDialog.h"

#include <QWidget>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

class QGroupBox;
class QScrollBar;

namespace wagemill {

class PictureBox;
class PushButton;

/// The preview of a finished workbook: its picture with zoom, scroll bars and drag panning, saving it, and the way
/// back. Its size is fixed once it has its first picture, because the scroll ranges belong to one size of the viewport;
/// it fills most of the screen it is made on.
class Form2 : public QWidget {
public:
    /// showEntryWindow  the way back to the window that the preview was opened from
    /// sheetOf          how the workbook is printed; none: the print button is disabled
    explicit Form2(std::function<void()> showEntryWindow, SheetOf sheetOf = {},
                   SaveFileDialog commonDialog = platformSaveFileDialog());

    /// The picture of the workbook; null: it has none. Handed over again, it replaces the earlier one: it is shown from
    /// its upper left corner at the present zoom, so that window and zoom never show different builds. Scroll ranges
    /// stay those of the first picture.
    void setPicture(const SharedPicture& picture);
    /// The temporary workbook that saving copies and leaving deletes.
    void setExcelFile(const std::filesystem::path& excelFile) { mExcelFile = excelFile; }

    /// What the picture shows, in words, for those who cannot see it.
    void describePicture(const std::string& description);

    /// The mouse pointer becomes the arrow, unless the window is busy.
    void resetPointer() { m_pointer.resetPointer(); }

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    enum class ZoomDirection { In, Out };

    void layOutControls();
    void connectControls();
    void setKeys();

    void Form_Load();
    void Form_Activate();
    void Form_QueryUnload();
    void Form_Unload();

    void PushButton1_Click();
    void PushButton2_Click();
    void PushButtonPrint_Click();
    void PushButton6_Click();
    void PushButton8_Click();
    void Picture1_MouseDown(float x, float y);
    void Picture1_MouseMove(Qt::MouseButtons buttons, float x, float y);
    void Picture1_MouseUp();
    void HScroll1_Change();
    void VScroll1_Change();

    void StepZoom(ZoomDirection direction);
    void SetZoom(float factor);
    void RedrawImage();
    void SetupScrollBars();
    void SetHScrollbarByPercent(QScrollBar& scrollBar, std::int16_t percent);
    void SetVScrollbarByPercent(QScrollBar& scrollBar, std::int16_t percent);

    void fitWindow();
    void keepOriginal();
    void takeNaturalSize();
    void scrollToOrigin();
    MessageAnswer makeRoomFor(const std::filesystem::path& name);

    PushButton* PushButton1;
    PushButton* PushButton2;
    PushButton* PushButtonPrint;
    PushButton* PushButton6;
    PushButton* PushButton8;
    QGroupBox* Frame1;
    QWidget* Picture2;
    PictureBox* Picture1;
    PictureBox* Zoom_Ori;
    QScrollBar* HScroll1;
    QScrollBar* VScroll1;
    SaveFileDialog CommonDialog1;
    SheetOf m_sheetOf;
    WindowPointer m_pointer;
    std::function<void()> m_showEntryWindow;

    std::filesystem::path mExcelFile;
    float DragStartX = 0; ///< where the picture was grabbed, in its own coordinates
    float DragStartY = 0;
    std::int16_t HScrollUnit = 0; ///< units that one step of the scroll bar moves the picture: 0, 1 or 10
    std::int16_t VScrollUnit = 0;
    std::int32_t OrigWidth = 0;
    std::int32_t OrigHeight = 0;
    std::int32_t ZoomWidth = 0;
    std::int32_t ZoomHeight = 0;
    float ZoomFactor = 1;
    int m_zoomTurn = 0;       ///< of the wheel since the last zoom step, in eighths of a degree
    bool SetupPending = true; ///< until the window was active with a picture for the first time
};

} // namespace wagemill
