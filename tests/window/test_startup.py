"""Before the first page: the language, a kit that cannot be used, and an installation
an earlier run left halfway."""

import os
import shutil
import signal
import unittest

import window_driver as h

DE = "Installation der Konfiguration"


class Startup(h.WindowTest):
    def title_of(self, *args, **env):
        with self.user.start(*args, **env) as setup:
            return setup.title(setup.window())

    def test_the_language_option_then_the_locale_names_the_window(self):
        cases = [(["/Lde"], {}, DE), (["/Lxx"], {}, h.TITLE),
                 (["-Len"], {"LANG": "de_DE.UTF-8"}, h.TITLE),
                 (["/Lxx"], {"LANG": "de_DE.UTF-8"}, DE),
                 ([], {"LANG": "en_US.UTF-8", "LC_MESSAGES": "ru_RU.UTF-8"},
                  "Установка конфигурации")]
        for args, env, title in cases:
            with self.subTest(args=args, env=env):
                self.assertEqual(self.title_of(*args, **env), title)

    def test_a_language_option_ends_the_options_so_a_later_silent_one_is_ignored(self):
        setup = self.start("-lde", "/S")
        wid = setup.window(DE)
        self.display.key(wid, "Escape")
        self.display.answer(setup.box(DE), h.YES)
        self.assertEqual(setup.exit_status(), 0)
        self.assertFalse((self.user.home / h.DEFAULT_DIR).exists())

    def test_an_unusable_kit_shows_one_box_and_no_wizard(self):
        def damaged(user):
            kit = user.cwd / "ord8.dkz"
            kit.write_bytes(kit.read_bytes()[:1000])

        def tiny_temporary_folder(user):
            # Three times the kit must be free in TMPDIR: 192 KiB of 128.
            h.pack({"big.bin": os.urandom(64 * 1024)}, user.cwd / "ord8.dkz")
            return ["unshare", "-m", "sh", "-c",
                    'mount -t tmpfs -o size=128k ord8 "$TMPDIR" && exec "$@"', "sh"]
        cases = {"no kit": lambda user: (user.cwd / "ord8.dkz").unlink(),
                 "damaged kit": damaged, "no room for the kit": tiny_temporary_folder}
        for name, spoil in cases.items():
            with self.subTest(name):
                if name == "no room for the kit" and (os.geteuid() != 0 or
                                                      not shutil.which("unshare")):
                    self.skipTest("a private tmpfs needs root and unshare")
                user = h.Sandbox(self.display)
                wrap = spoil(user) or ()
                with user.start(wrap=wrap) as setup:
                    box = setup.box()
                    wizards = [w for w, (_, g) in self.display.windows().items()
                               if g[2:] == h.SIZE]
                    self.assertEqual(wizards, [])
                    self.display.answer(box)
                    self.assertEqual(setup.exit_status(), 0)

    def test_an_interrupted_installation_is_undone_before_the_welcome_page(self):
        user = self.user
        target = user.root / "templates"
        h.write_tree(target, {"a.txt": b"old a"}, h.OLD_TIME)
        before = h.read_tree(target)
        h.pack({"a.txt": b"new a", "b.txt": b"new b"}, user.cwd / "ord8.dkz")
        killed = h.spawn(
            [h.KITTOOL, "install", user.cwd / "ord8.dkz", target, "--no-remember"],
            env=dict(user.env, ORD8_TEST_HOLD_AT_FILE="2"), stdout=h.DEVNULL,
            stderr=h.DEVNULL)
        self.addCleanup(h.stop, killed, signal.SIGKILL)
        h.wait_for("ord8kit to replace a.txt and hold",
                   lambda: h.contents(target / "a.txt") == b"new a")
        h.stop(killed, signal.SIGKILL)
        self.assertEqual(len(user.journals()), 1)
        setup = self.start()
        setup.window()
        self.assertEqual(h.read_tree(target), before)
        self.assertEqual(user.journals(), [])


if __name__ == "__main__":
    unittest.main()
