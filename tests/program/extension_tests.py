#!/usr/bin/python3
"""The command in the file managers' menus, from their files to the Temporary folder, with every odd name. What
each file manager does with its file is done here in the same way; the file managers themselves aren't needed.
Usage: extension_tests.py path/to/tidemar [unittest's arguments]"""

import os
import shutil
import subprocess
import sys
import unittest
import urllib.parse
import xml.etree.ElementTree

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools"))
from session import TAG, Session, tags  # noqa: E402

from gi.repository import GLib  # noqa: E402

PROGRAM = os.path.abspath(sys.argv.pop(1))
BINARIES = os.path.dirname(PROGRAM)
ODD_NAMES = [b"plain", b"two  spaces ", b"it's", b'say "hi"', b"100%U %%f %20", b"line\nbreak\n", b"byte \xff\xfe",
             b"$HOME `id` $(id)", b"back\\slash\\n", b"-n", b"a;b&c|d>e<f", b"#hash?query=1", "Grüße…".encode(), b"~"]
COMMAND = "Tidemar: Make Temporary…"


def uri(path):
    """As GLib writes it, which is what most file managers give: an apostrophe and a dollar sign stay."""
    return "file://" + urllib.parse.quote(path, safe="/!$&'()*+,;=:@-._~")


def key_file(path, group, key):
    file = GLib.KeyFile()
    file.load_from_file(path, GLib.KeyFileFlags.NONE)
    return file.get_string(group, key)


# A stand-in for the file manager's side of a Python extension: shows the menu for the folders in the arguments,
# and presses the command.
PYTHON_HOST = """
import importlib.util, sys, types
import gi.repository
from gi.repository import GObject

module, path, *uris = sys.argv[1:]

class MenuProvider: pass

class MenuItem:
    def __init__(self, name, label, icon): self.label = label
    def connect(self, signal, handler): self.press = handler

class Item:
    def __init__(self, uri): self.uri = uri
    def is_directory(self): return not self.uri.endswith(".file")
    def get_uri(self): return self.uri

setattr(gi.repository, module, types.SimpleNamespace(MenuProvider=MenuProvider, MenuItem=MenuItem))
specification = importlib.util.spec_from_file_location("extension", path)
extension = importlib.util.module_from_spec(specification)
specification.loader.exec_module(extension)
for item in extension.TidemarMakeTemporary().get_file_items(None, [Item(uri) for uri in uris]):
    print(item.label)
    item.press(item)
"""


class EachFileManager(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.session = cls.enterClassContext(Session(PROGRAM))
        # The helper's own path is as odd as a user's may be.
        directory = os.path.join(cls.session.root, "it's 100% \"mine\" $HOME & <own>")
        os.mkdir(directory)
        cls.helper = os.path.join(directory, "tidemar-make-temporary")
        shutil.copy(os.path.join(BINARIES, "tidemar-make-temporary"), cls.helper)
        os.symlink(PROGRAM, os.path.join(directory, "tidemar"))
        cls.session.start(stderr=subprocess.DEVNULL)

    def install(self, name, *loaders):
        """Answers folders with all the odd names."""
        subprocess.run([os.path.join(BINARIES, "menuEntries"), "install", name, self.helper, *loaders],
                       env=self.session.environment, check=True)
        parent = os.path.join(os.fsencode(self.session.home), f"{name} {len(loaders)}".encode())
        folders = [os.path.join(parent, odd) for odd in ODD_NAMES]
        for folder in folders:
            os.makedirs(folder)
        return folders

    def assert_all_become_temporary(self, folders):
        for folder in folders:
            self.session.wait_for(lambda: TAG in tags(folder), f"{folder} is Temporary")

    def dolphin(self, menu, folders):
        group = "Desktop Action makeTemporary"
        self.assertEqual(key_file(menu, group, "Name"), COMMAND)
        _, words = GLib.shell_parse_argv(key_file(menu, group, "Exec"))
        self.assertEqual(words.pop(), "%U")
        return [word.replace("%%", "%") for word in words] + [uri(folder) for folder in folders]

    def nemo(self, action, folders):
        self.assertEqual(key_file(action, "Nemo Action", "Name"), COMMAND)
        quote = {"double": '"', "single": "'"}[key_file(action, "Nemo Action", "Quote")]
        uris = " ".join(quote + uri(folder) + quote for folder in folders)
        _, words = GLib.shell_parse_argv(key_file(action, "Nemo Action", "Exec").replace(" %U", " " + uris))
        return [word.replace("%%", "%") for word in words[:1]] + words[1:]

    def pcmanfm(self, action, folders):
        self.assertEqual(key_file(action, "Desktop Entry", "Name"), COMMAND)
        group = "X-Action-Profile " + key_file(action, "Desktop Entry", "Profiles").rstrip(";")
        self.assertEqual(key_file(action, group, "TryExec"), self.helper)
        command, field = key_file(action, group, "Exec").rsplit(" ", 1)
        self.assertEqual(field, "%F")
        # It quotes the paths itself, splits the line as a shell does, and starts no shell.
        _, words = GLib.shell_parse_argv(command.replace("%%", "%"))
        return [*words, *folders]

    def thunar(self, actions, folders):
        action = xml.etree.ElementTree.parse(actions).find(f"action[name='{COMMAND}']")
        self.assertIsNotNone(action.find("directories"))
        command, field = action.find("command").text.rsplit(" ", 1)
        self.assertEqual(field, "%F")
        # Thunar quotes the paths itself; here the shell hands the quoted words on, as bytes.
        paths = b" ".join(b"'" + folder.replace(b"'", b"'\\''") + b"'" for folder in folders)
        return ["sh", "-c", os.fsencode(command.replace("%%", "%")) + b" " + paths]

    def script(self, script, folders):
        uris = "".join(uri(folder) + "\n" for folder in folders)
        variable = "CAJA_SCRIPT_SELECTED_URIS" if "caja" in script else "NAUTILUS_SCRIPT_SELECTED_URIS"
        return ["env", f"{variable}={uris}", script]

    def test_the_command_makes_every_folder_temporary(self):
        for name, place, words in [
                ("Dolphin", ".local/share/kio/servicemenus/app.quernly.tidemar.make-temporary.desktop", self.dolphin),
                ("Nemo", ".local/share/nemo/actions/tidemar-make-temporary.nemo_action", self.nemo),
                ("PCManFM and PCManFM-Qt", ".local/share/file-manager/actions/app.quernly.tidemar.make-temporary.desktop",
                 self.pcmanfm),
                ("Thunar", ".config/Thunar/uca.xml", self.thunar),
                ("Files (Nautilus)", f".local/share/nautilus/scripts/{COMMAND}", self.script),
                ("Caja", f".config/caja/scripts/{COMMAND}", self.script)]:
            with self.subTest(name):
                folders = self.install(name)
                for chosen in (folders[:1], folders[1:]):
                    subprocess.run(words(os.path.join(self.session.home, place), chosen),
                                   env=self.session.environment, check=True, cwd=self.session.home)
                self.assert_all_become_temporary(folders)

    def test_python_extensions(self):
        loaders = os.path.join(self.session.root, "loaders")
        for name, program, module, loader in [
                ("Files (Nautilus)", "nautilus", "Nautilus", "nautilus/extensions-4/libnautilus-python.so"),
                ("Nemo", "nemo", "Nemo", "nemo/extensions-3.0/libnemo-python.so"),
                ("Caja", "caja", "Caja", "caja/extensions-2.0/libcaja-python.so")]:
            with self.subTest(name):
                os.makedirs(os.path.join(loaders, loader))
                folders = self.install(name, loaders)
                path = f".local/share/{program}-python/extensions/tidemar_make_temporary.py"

                def press(*uris):
                    command = [sys.executable, "-c", PYTHON_HOST, module, os.path.join(self.session.home, path), *uris]
                    return subprocess.run(command, env=self.session.environment, check=True, text=True,
                                          stdout=subprocess.PIPE).stdout.split("\n")[:-1]
                uris = [uri(folder) for folder in folders]
                self.assertEqual(press(*uris, uri(folders[0]) + ".file"), [])
                self.assertEqual(press("trash:///folder"), [])
                self.assertEqual(press(*uris), [COMMAND])
                self.assert_all_become_temporary(folders)
                # The shared list is JSON: names that aren't UTF-8 can't stand in it.
                listed = [u for u in uris if b"\xff" not in urllib.parse.unquote_to_bytes(u)]
                self.session.wait_for(lambda: press(*listed) == [], "the command goes away")


if __name__ == "__main__":
    unittest.main(verbosity=2)
