# SPDX-License-Identifier: GPL-2.0-or-later
"""Reading, writing and the settings of a state."""
import pytest

import tolvik


def test_load_reads_the_settings_of_the_file(examples):
    state = tolvik.load(examples / "silicon.state")
    assert state.numberofpoints == 501 and state.qzmax == 0.5  # as examples/silicon.state gives them
    assert tolvik.State.from_text(state.text()).text() == state.text()


def test_a_missing_file_is_one_clear_line(tmp_path):
    with pytest.raises(tolvik.StateFileError, match="absent.state: cannot be read") as caught:
        tolvik.load(tmp_path / "absent.state")
    assert isinstance(caught.value, OSError) and "\n" not in str(caught.value)


def test_another_version_is_refused():
    with pytest.raises(tolvik.StateFileError, match="version 1"):
        tolvik.State.from_text("fileversion = 2\n")


def test_save_to_a_folder_that_does_not_exist(tmp_path):
    with pytest.raises(tolvik.StateFileError, match="cannot be written"):
        tolvik.State().save(tmp_path / "absent" / "x.state")


def test_settings_have_the_comment_of_the_file_as_docstring():
    assert tolvik.State.resolution.__doc__ == "resolution"
    assert tolvik.State.numberofpoints.__doc__ == "number of points to show"


def test_unknown_attributes_raise():
    state = tolvik.State()
    with pytest.raises(AttributeError, match="numberofpoint'"):
        state.numberofpoint
    with pytest.raises(AttributeError):
        state.numberofpoint = 5


@pytest.mark.parametrize("key, value", [("numberofpoints", 1.5), ("numberofpoints", "3"), ("qzmax", "a"),
                                        ("fastresolution", "yes")])
def test_values_of_another_type_raise(key, value):
    with pytest.raises(TypeError, match=key):
        setattr(tolvik.State(), key, value)


def test_integers_beyond_32_bits_raise():
    with pytest.raises(OverflowError, match="numberofpoints: 4294967296 is outside -2147483648 to 2147483647"):
        tolvik.State().numberofpoints = 2 ** 32
