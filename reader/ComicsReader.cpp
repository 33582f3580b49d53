#include "ComicsReader.h"

ComicsReader::ComicsReader(QWidget* parent, PluginState*)
    : QWidget(parent ? parent->parentWidget() : nullptr)
{
}
