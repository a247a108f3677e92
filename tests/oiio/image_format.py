# Writes and reads a media file with OpenImageIO's module.
import os
import tempfile

import numpy
import OpenImageIO as oiio

pixels = numpy.arange(32 * 16 * 4, dtype=numpy.uint8).reshape(16, 32, 4)
with tempfile.TemporaryDirectory() as folder:
    file = os.path.join(folder, "p.zet")
    spec = oiio.ImageSpec(32, 16, 4, oiio.UINT8)
    spec["zet:format"] = "rgba8"
    spec["oiio:ColorSpace"] = "sRGB"
    output = oiio.ImageOutput.create(file)
    assert output.open(file, spec) and output.write_image(pixels) and output.close(), output.geterror()
    again = oiio.ImageInput.open(file)
    assert (again.read_image(oiio.UINT8) == pixels).all()
    assert again.spec()["zet:format"] == "rgba8"

    with open(file, "r+b") as damaged:
        damaged.truncate(100)
    assert oiio.ImageInput.open(file) is None
    assert "too short" in oiio.geterror()
