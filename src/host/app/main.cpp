// lexicorn-host: the reader's application model without windows. It loads
// the plug-in, finishes its launch and reports what the launch did.

#include "host/app/host_application.h"

#include "runtime/runtime.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const lexicorn::host::HostApplication host = lexicorn::host::launchHost();
    std::printf("plug-in: %s\n", host.plugin.loaded ? qPrintable(host.plugin.path) : "none");
    std::printf("launched: %s\n", host.delegate->launched ? "yes" : "no");
    std::printf("title link colour: %s\n",
                lexicorn::runtime::send<std::string>(*host.delegate, "defaultTitleLinkColor0").c_str());
    QCoreApplication::processEvents();
    return host.plugin.problem.isEmpty() ? 0 : 1;
}
