# What the init.py of the host's archive does in a host, for which a module of its name stands in.
import os
import runpy
import sys
import tempfile
import types

calls = []
nuke = types.ModuleType("nuke")
nuke.NUKE_VERSION_MAJOR, nuke.NUKE_VERSION_MINOR = 14, 1
for name in ("pluginAddPath", "addSequenceFileExtension", "tprint"):
    setattr(nuke, name, lambda argument, name=name: calls.append((name, argument)))
sys.modules["nuke"] = nuke

with tempfile.TemporaryDirectory() as folder:
    init = os.path.join(folder, "init.py")
    with open(sys.argv[1], "rb") as source, open(init, "wb") as copy:
        copy.write(source.read())
    version = os.path.join(os.path.realpath(folder), "14.1")
    runpy.run_path(init)
    assert len(calls) == 1 and calls[0][0] == "tprint" and "14.1" in calls[0][1], calls
    calls.clear()
    os.mkdir(version)
    runpy.run_path(init)
    assert os.path.realpath(calls[0][1]) == version, calls
    assert [argument for name, argument in calls[1:]] == ["zet", "z9zt", "9zt"], calls
