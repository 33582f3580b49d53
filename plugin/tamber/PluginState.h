// SPDX-License-Identifier: MIT
#ifndef TAMBER_PLUGINSTATE_H
#define TAMBER_PLUGINSTATE_H

// State that the host shares with a reading view. The view writes these two
// fields; they lie side by side in this order.
struct PluginState
{
    int progressPercent = 0;
    int readerOpen = 0;
};

#endif
