"""Leaving the wizard early, a refused path and a failed pass: the right page and box,
exit status 0, and the templates folder exactly as it was whenever nothing succeeded."""

import unittest

import window_driver as h

KIT = {"a.txt": b"new a", "b.txt": b"new b", "c.txt": b"new c"}


class Cancel(h.WindowTest):
    def setUp(self):
        super().setUp()
        # An older a.txt the kit replaces and a file of the user's own.
        self.target = self.user.home / h.DEFAULT_DIR
        h.write_tree(self.target, {"a.txt": b"old a", "mine.txt": b"mine"}, h.OLD_TIME)
        h.pack(KIT, self.user.cwd / "ord8.dkz")

    def ask(self, setup, wid, how, answer):
        """Asks to cancel by Escape or the Cancel button, and answers."""
        if how == "Escape":
            self.display.key(wid, "Escape")
        else:
            self.display.click(wid, h.CANCEL)
        box = setup.box()
        self.display.answer(box, answer)
        setup.gone(box)

    def assert_unchanged(self, before):
        self.assertEqual(h.read_tree(self.target), before)
        self.assertEqual(self.user.journals(), [])
        self.assertEqual(self.user.launcher(), "")

    def test_no_keeps_the_wizard_and_yes_ends_it_on_every_page(self):
        before = h.read_tree(self.target)
        d = self.display
        setup = self.start()
        wid = setup.window()
        self.ask(setup, wid, "Escape", h.NO)
        self.ask(setup, wid, "Cancel", h.NO)
        d.wait_page(wid, "welcome")
        d.key(wid, "Return")
        d.wait_page(wid, "directory")
        self.ask(setup, wid, "Escape", h.NO)
        d.wait_page(wid, "directory")
        self.ask(setup, wid, "Cancel", h.YES)
        self.assertEqual(setup.exit_status(), 0)
        self.assert_unchanged(before)
        # On the success page only Escape asks; Yes ends without opening anything.
        setup = self.start()
        wid = setup.window()
        d.key(wid, "Return")
        d.wait_page(wid, "directory")
        d.key(wid, "Return")
        d.wait_page(wid, "success")
        self.ask(setup, wid, "Escape", h.YES)
        self.assertEqual(setup.exit_status(), 0)
        self.assertEqual(h.read_tree(self.target)["b.txt"], b"new b")

    def held_installation(self):
        """A run held before c.txt, a.txt replaced and b.txt made."""
        setup = self.start(hold=3)
        wid = setup.window()
        self.display.key(wid, "Return")
        self.display.wait_page(wid, "directory")
        self.display.key(wid, "Return")
        h.wait_for("the pass to hold before c.txt",
                   lambda: h.contents(self.target / "b.txt") == b"new b")
        self.assertEqual(self.display.page(wid), "progress")
        return setup, wid

    def test_escape_yes_during_installation_rolls_back_before_the_exit(self):
        before = h.read_tree(self.target)
        setup, wid = self.held_installation()
        self.ask(setup, wid, "Escape", h.YES)
        self.assertEqual(setup.exit_status(), 0)
        self.assert_unchanged(before)

    def test_cancel_during_installation_rolls_back_to_the_error_page(self):
        before = h.read_tree(self.target)
        setup, wid = self.held_installation()
        self.ask(setup, wid, "Escape", h.NO)
        self.assertEqual(self.display.page(wid), "progress")
        self.display.click(wid, h.CANCEL)
        self.display.answer(setup.box())
        self.display.wait_page(wid, "error")
        self.assert_unchanged(before)
        self.display.key(wid, "Return")
        self.assertEqual(setup.exit_status(), 0)

    def test_a_folder_in_the_way_fails_and_changes_nothing(self):
        h.write_tree(self.target, {"c.txt/inside": b"keep"})
        before = h.read_tree(self.target)
        setup = self.start()
        wid = setup.window()
        self.display.key(wid, "Return")
        self.display.wait_page(wid, "directory")
        self.display.key(wid, "Return")
        self.display.answer(setup.box())
        self.display.wait_page(wid, "error")
        self.display.click(wid, h.NEXT)
        self.assertEqual(setup.exit_status(), 0)
        self.assert_unchanged(before)

    def test_an_empty_or_relative_path_is_refused_and_the_page_stays(self):
        d = self.display
        setup = self.start()
        wid = setup.window()
        d.key(wid, "Return")
        d.wait_page(wid, "directory")
        for typed in ("", "relative\\dir"):
            with self.subTest(typed=typed):
                d.click(wid, h.PATH_FIELD)
                d.key(wid, "End", "shift+Home", "BackSpace")
                if typed:
                    d.type(wid, typed)
                d.key(wid, "Return")
                d.answer(setup.box())
                d.wait_page(wid, "directory")
        d.click(wid, h.PATH_FIELD)
        d.key(wid, "End", "shift+Home", "BackSpace")
        d.type(wid, "~/from tilde")
        d.key(wid, "Return")
        d.wait_page(wid, "success")
        d.key(wid, "Return")
        self.assertEqual(setup.exit_status(), 0)
        self.assertEqual(h.read_tree(self.user.home / "from tilde"), KIT)
        self.assertEqual(list(self.user.cwd.iterdir()), [self.user.cwd / "ord8.dkz"])


if __name__ == "__main__":
    unittest.main()
