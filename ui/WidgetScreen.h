#pragma once

#include "ui/Screen.h"

#include <QHash>

class QLineEdit;
class QWidget;

// Shows `text` in a read-only field: its start when it is longer than the field, whole in the
// tool tip then. An unchanged text costs no repaint.
void ShowInReadout(QLineEdit* field, const QString& text);

// The display's text fields mapped onto the window's widgets by object name: line edits and
// text boxes.
class WidgetScreen : public Screen {
public:
    explicit WidgetScreen(QWidget& window) : m_window(window) {}
    void SetText(const QString& control, const QString& text) override;

private:
    QWidget* Find(const QString& control) const;

    QWidget& m_window;
    mutable QHash<QString, QWidget*> m_widgets;
};
