// SPDX-License-Identifier: MIT
// The entry points by which the host finds the plug-in.

#include "ComicsReaderPlugin.h"

#include <QPointer>

// Read by the host's loader straight from the file, without running any code,
// so it lies alone in a section of its own. The values are those of the
// device's Qt build; the loader refuses the plug-in if any differ.
__attribute__((section(".qtplugin"), used, aligned(1))) static const char
    qt_plugin_verification_data[]
    = "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
      "version=4.8.0\n"
      "debug=false\n"
      "buildkey=arm qws/linux ostra-g++ no-pkg-config QT_NO_QWS_CURSOR QT_NO_QWS_QPF2";

extern "C" Q_DECL_EXPORT const char* qt_plugin_query_verification_data()
{
    return qt_plugin_verification_data;
}

// The root object lives while anyone keeps it; once deleted, the next call
// makes a new one.
extern "C" Q_DECL_EXPORT QObject* qt_plugin_instance()
{
    static QPointer<QObject> instance;
    if (!instance)
        instance = new ComicsReaderPlugin();
    return instance;
}
