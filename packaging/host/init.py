# Put this folder on NUKE_PATH, or its path into nuke.pluginAddPath() of an init.py of your own.
#
# Adds the plug-in that was built for the running version of the host: it works in no other.
import os

import nuke

folder = os.path.join(
    os.path.dirname(os.path.abspath(__file__)),
    "%d.%d" % (nuke.NUKE_VERSION_MAJOR, nuke.NUKE_VERSION_MINOR),
)
if os.path.isdir(folder):
    nuke.pluginAddPath(folder)
    for extension in ("zet", "z9zt", "9zt"):
        nuke.addSequenceFileExtension(extension)  # one line for a sequence in the file browser
else:
    nuke.tprint("zetWriter: there is no folder %s, so this version cannot write media files" % folder)
