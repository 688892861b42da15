#include "ui/MainWindow.h"

MainWindow::MainWindow(const QDir &, QWidget *parent)
    : QMainWindow(parent)
{
}

void MainWindow::openFiles(const QStringList &) { }
