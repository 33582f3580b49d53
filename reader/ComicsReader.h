#ifndef COMICSREADER_H
#define COMICSREADER_H

#include <QWidget>

struct PluginState;

// Placeholder until the reading view lands.
class ComicsReader : public QWidget
{
    Q_OBJECT
public:
    ComicsReader(QWidget* parent, PluginState* state);
};

#endif
