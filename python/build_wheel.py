"""Build backend that packs the package as it is, so that ``pip install ./python`` works without a network."""
import base64
import hashlib
import pathlib
import re
import zipfile

HERE = pathlib.Path(__file__).parent
PACKAGE = HERE / "sorvo_audio"
# A shared library that was put beside the modules is the first one that they look for.
FILES = ("*.py", "py.typed", "digest_calls.txt", "libsorvo_audio.so.0")


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    version = re.search(r'__version__ = "(.+)"', (PACKAGE / "__init__.py").read_text())[1]
    contents = {f"{PACKAGE.name}/{path.name}": path.read_bytes()
                for pattern in FILES for path in sorted(PACKAGE.glob(pattern))}
    tag = "py3-none-any"
    if f"{PACKAGE.name}/{FILES[-1]}" in contents:
        tag = "py3-none-linux_x86_64"
    info = f"sorvo_audio-{version}.dist-info"
    contents[f"{info}/METADATA"] = (
        f"Metadata-Version: 2.1\nName: sorvo-audio\nVersion: {version}\n"
        "Summary: Audio feature extraction for neural-network models\n"
        "License: MIT\nRequires-Python: >=3.9\nRequires-Dist: numpy\n").encode()
    contents[f"{info}/WHEEL"] = (
        f"Wheel-Version: 1.0\nGenerator: sorvo_audio\nRoot-Is-Purelib: {str(tag.endswith('any')).lower()}\n"
        f"Tag: {tag}\n").encode()
    record = "".join(f"{name},sha256={digest(data)},{len(data)}\n" for name, data in contents.items())
    contents[f"{info}/RECORD"] = f"{record}{info}/RECORD,,\n".encode()
    name = f"sorvo_audio-{version}-{tag}.whl"
    with zipfile.ZipFile(pathlib.Path(wheel_directory) / name, "w", zipfile.ZIP_DEFLATED) as wheel:
        for path, data in contents.items():
            wheel.writestr(path, data)
    return name


def digest(data):
    return base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
