"""A copy of the tree in which faults are planted, one at a time."""

import contextlib
import pathlib
import shutil
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent


def run(command, timeout=600, **options):
    """Whether the command succeeds in time."""
    try:
        return subprocess.run(command, capture_output=True, timeout=timeout, **options).returncode == 0
    except subprocess.TimeoutExpired:
        return False


class Tree:
    """The files that git knows, as they are, in build/NAME, with a build folder of their own."""

    def __init__(self, name, *options):
        self.work = ROOT / "build" / name
        self.path = self.work / "tree"
        self.build_path = self.work / "build"
        listed = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True, text=True)
        files = [file for file in listed.stdout.splitlines() if (ROOT / file).is_file()]
        for old in [path for path in self.path.rglob("*") if path.is_file()]:
            if str(old.relative_to(self.path)) not in files:
                old.unlink()
        for file in files:
            self.copy(ROOT / file, self.path / file)
        subprocess.run(["cmake", "-G", "Ninja", "-S", self.path, "-B", self.build_path,
                        "-DKELM_BUILD_EXAMPLES=OFF", f"-DKELM_LOCALE_DIR={self.work}/locales", *options],
                       check=True, stdout=subprocess.DEVNULL)

    @staticmethod
    def copy(source, target):
        """With the time of the copy, so that what a fault was built into is built again."""
        if not target.exists() or target.read_bytes() != source.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)

    def build(self, *targets):
        return run(["ninja", "-C", self.build_path, *targets], timeout=1800)

    @contextlib.contextmanager
    def changed(self, file, change):
        """The file with its text changed by the function."""
        path = self.path / file
        text = path.read_text()
        path.write_text(change(text))
        try:
            yield
        finally:
            path.write_text(text)
