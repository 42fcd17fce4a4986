#include "ui/MainForm.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    MainForm form;
    form.Form_Load();
    form.show();
    return app.exec();
}
