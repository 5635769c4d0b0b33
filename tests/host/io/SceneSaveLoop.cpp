// Saves a scene of an in-memory phantom to the document named on the command line again and
// again, printing "saved" after each save, until it is killed.

#include "OXWSceneDocument.h"

#include <OXMObjectPtr.h>
#include <OXMScene.h>
#include <OXMScenePhantom.h>
#include <OXMVolumeRenderObject.h>

#include <QString>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    OXMObjectPtr scene(new OXMScene);
    auto* volume = OXMVolumeRenderObject::create(OXMScenePhantom::createGrid16(std::atoi(argv[2])));
    static_cast<OXMScene*>(scene.get())->addVolume(volume);
    for (;;) {
        QString error;
        if (!OXWSceneDocument::save(*static_cast<OXMScene*>(scene.get()),
                                    QString::fromLocal8Bit(argv[1]), error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 1;
        }
        std::printf("saved\n");
        std::fflush(stdout);
    }
}
