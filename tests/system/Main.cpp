#include "platform/linux/desktop/Application.h"

#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    korlan::TheApplication();
    return RUN_ALL_TESTS();
}
