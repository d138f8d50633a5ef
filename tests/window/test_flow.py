"""The wizard's way through by mouse and keys, and silently: what lands where."""

import unittest

import window_driver as h


class Flow(h.WindowTest):
    def finish_on_success(self, setup, wid, open_description=True):
        self.display.wait_page(wid, "success")
        if not open_description:
            self.display.click(wid, h.OPEN_DESCRIPTION)
        self.display.click(wid, h.NEXT)
        self.assertEqual(setup.exit_status(), 0)

    def test_typed_path_then_the_remembered_one_with_its_description(self):
        d, user = self.display, self.user
        # A shell would split this name or run what it holds; nothing may hand it to one.
        target = user.root / "it's $(touch pwned) & dir" / "tmplts"
        setup = self.start()
        wid = setup.window(h.TITLE)
        d.click(wid, h.NEXT)
        d.wait_page(wid, "directory")
        d.click(wid, h.BACK)
        d.wait_page(wid, "welcome")
        d.key(wid, "Return")
        d.wait_page(wid, "directory")
        d.click(wid, h.PATH_FIELD)
        d.key(wid, "End", "shift+Home")
        d.type(wid, str(target).replace("/", "\\"))
        d.click(wid, h.BROWSE)
        panel = setup.box("Open")
        d.answer(panel, h.PANEL_CANCEL)
        setup.gone(panel)
        d.click(wid, h.NEXT)
        self.finish_on_success(setup, wid, open_description=False)
        self.assertEqual(h.read_tree(target), h.read_tree(h.SAMPLE_TREE))
        self.assertIn(f"ConfigurationTemplatesLocation={target}", user.launcher())
        self.assertFalse((user.home / h.DEFAULT_DIR).exists())

        # Next time the remembered folder is proposed; Finish opens its description.
        setup = self.start()
        wid = setup.window()
        d.key(wid, "Return")
        d.wait_page(wid, "directory")
        d.key(wid, "Return")
        self.finish_on_success(setup, wid)
        opened = h.wait_for("the opener to run", lambda: user.opened.exists() and
                            user.opened.read_text())
        # One run, one argument: the run before, with the box off, opened nothing.
        self.assertEqual(opened, f"1\t{target}/docs/description-en.html\n")

    def test_silent_installs_into_the_proposed_folder_by_itself(self):
        setup = self.start("/S")
        self.assertEqual(setup.exit_status(), 0)
        target = self.user.home / h.DEFAULT_DIR
        self.assertEqual(h.read_tree(target), h.read_tree(h.SAMPLE_TREE))
        self.assertIn(f"ConfigurationTemplatesLocation={target}", self.user.launcher())


if __name__ == "__main__":
    unittest.main()
