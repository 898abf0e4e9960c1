/* The skin of both windows: a Qt style sheet. Every colour is one of the palette, so that a dark desktop stays dark;
   nothing changes while the mouse is over it. */

QPushButton {
    background-color: palette(button);
    color: palette(button-text);
    border: 1px solid palette(mid);
    border-radius: 4px;
    padding: 5px 14px;
}

QPushButton:focus {
    border: 2px solid palette(highlight);
    padding: 4px 13px;
}

/* The button that does the work is the one the eye finds. */
QPushButton#PushButton22, #Form2 QPushButton#PushButton6 {
    background-color: palette(highlight);
    color: palette(highlighted-text);
    border: 2px solid palette(highlight);
    padding: 6px 20px;
    font-weight: bold;
}

QPushButton#PushButton22:focus, #Form2 QPushButton#PushButton6:focus {
    border-color: palette(button-text);
}

QPushButton:pressed, QPushButton#PushButton22:pressed, #Form2 QPushButton#PushButton6:pressed {
    background-color: palette(window-text);
    color: palette(window);
}

QPushButton:disabled {
    color: palette(mid);
}

QGroupBox {
    border: 1px solid palette(mid);
    border-radius: 4px;
    margin-top: 0.6em;
    padding-top: 0.4em;
}

QGroupBox::title {
    subcontrol-origin: margin;
    left: 8px;
    padding: 0 3px;
}

QLineEdit {
    background-color: palette(base);
    color: palette(text);
    border: 1px solid palette(mid);
    border-radius: 3px;
    padding: 2px 4px;
    selection-background-color: palette(highlight);
    selection-color: palette(highlighted-text);
}

QLineEdit:focus {
    border-color: palette(highlight);
}

/* Inside the date field. */
QToolButton#calendarButton {
    background-color: transparent;
    border: none;
}
