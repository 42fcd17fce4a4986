#pragma once

#include <QComboBox>

// The port list. It says when it is about to open, so that adapters plugged in since the last
// look can be listed before the operator sees the entries.
class PortComboBox : public QComboBox {
    Q_OBJECT
public:
    using QComboBox::QComboBox;
    void showPopup() override;

signals:
    void aboutToOpen();
};
