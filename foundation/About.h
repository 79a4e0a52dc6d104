#pragma once

#include "foundation/FramelessWidget.h"

#include "ui_About.h"

/// The maker's data. Made anew without a parent at each use, and gone with its closing.
class About : public FramelessWidget
{
    Q_OBJECT

public:
    explicit About(QWidget *parent = nullptr);

private:
    void styleChildren();
    void placeOnScreen();

    Ui::AboutClass ui;
};
