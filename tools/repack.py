#!/usr/bin/env python3
"""Packs archives anew, so that the same files always give the same bytes: repack.py ARCHIVE...

CPack writes the files of a folder in the order in which the file system names them, with the times of
the build. Here they are sorted, belong to root, and have the time $SOURCE_DATE_EPOCH, which is that of
the last commit if it is not set.
"""
import gzip
import io
import os
import pathlib
import re
import subprocess
import sys
import tarfile
import tempfile
import time
import zipfile


def repack_zip(path, epoch):
    date = time.gmtime(epoch)[:6]
    with zipfile.ZipFile(path) as old:
        members = [(info, old.read(info)) for info in old.infolist() if not info.is_dir()]
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as new:
        for info, data in sorted(members, key=lambda member: member[0].filename):
            member = zipfile.ZipInfo(info.filename, date)
            member.external_attr = info.external_attr
            new.writestr(member, data, zipfile.ZIP_DEFLATED)


def repack_tar(path, epoch):
    with tarfile.open(path) as old:
        members = [(info, old.extractfile(info).read() if info.isfile() else b"") for info in old]
    tar = io.BytesIO()
    with tarfile.open(fileobj=tar, mode="w", format=tarfile.GNU_FORMAT) as new:
        for info, data in sorted(members, key=lambda member: member[0].name):
            info.mtime, info.uid, info.gid, info.uname, info.gname = epoch, 0, 0, "root", "root"
            new.addfile(info, io.BytesIO(data))
    path.write_bytes(gzip.compress(tar.getvalue(), 9, mtime=epoch))


def repack_deb(path, epoch):
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o755)
        subprocess.run(["dpkg-deb", "--raw-extract", path, folder], check=True)
        control = pathlib.Path(folder, "DEBIAN")
        sums = (control / "md5sums").read_text().splitlines()
        (control / "md5sums").write_text("\n".join(sorted(sums)) + "\n")
        size = sum(path.lstat().st_size for path in (pathlib.Path(folder) / "usr").rglob("*")
                   if path.is_file() and not path.is_symlink())
        text = re.sub("(Installed-Size: ).*", rf"\g<1>{size // 1024}",
                      (control / "control").read_text())
        (control / "control").write_text(text)
        for file in pathlib.Path(folder).rglob("*"):
            os.utime(file, (epoch, epoch), follow_symlinks=False)
        subprocess.run(["dpkg-deb", "--root-owner-group", "--build", folder, path], check=True,
                       env={**os.environ, "SOURCE_DATE_EPOCH": str(epoch)}, stdout=sys.stderr)


def main():
    here = pathlib.Path(__file__).parent
    commit = ["git", "-C", here, "log", "-1", "--format=%ct"]
    epoch = int(os.environ.get("SOURCE_DATE_EPOCH") or subprocess.check_output(commit))
    for path in map(pathlib.Path, sys.argv[1:]):
        {".zip": repack_zip, ".gz": repack_tar, ".deb": repack_deb}[path.suffix](path, epoch)


main()
