// SPDX-License-Identifier: MIT
#ifndef BENCHENVIRONMENT_H
#define BENCHENVIRONMENT_H

#include <QApplication>

#include <memory>

// An environment, inherited by the programs a benchmark runs, that touches
// neither a display nor the user's settings.
namespace BenchEnvironment {

// Before the application object: the time zone, and settings and Qt's
// runtime folder in a folder of their own.
void prepare();
// The application object, drawing where no display of the user's is
// touched: offscreen under Qt 5, a display server of its own under Qt 4.
std::unique_ptr<QApplication> makeApplication(int& argc, char** argv);

} // namespace BenchEnvironment

#endif
