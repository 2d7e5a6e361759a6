import copy

import pytest

import ztcoreex


def _store(**values):
    store = ztcoreex.MetaData()
    [store.add(name, value) for name, value in values.items()]
    return store


def test_names_come_in_byte_order_with_their_own_types_lists_read_as_zero_and_clear_frees_them():
    store = ztcoreex.MetaData()
    lists = {"l1": [1, 2, 3], "l2": [1.5, 2], "l3": ["a", "b"], "l4": [], "l5": (7,)}
    assert len(store) == 0 and list(store) == [] and "" not in store and store.get("x") is None
    for name, value in [("b", 1), ("a", 2.5), ("B", "text"), ("", 0), ("ab", 4294967295),
                        ("\u00e9", 3), ("c\0d", 5), *lists.items()]:  # a name ends at a NUL
        store.add(name, value, description="d")
    assert list(store) == ["", "B", "a", "ab", "b", "c", *lists, "\u00e9"]
    assert store.items() == [("", 0), ("B", "text"), ("a", 2.5), ("ab", 4294967295), ("b", 1),
                             ("c", 5), *[(name, 0) for name in lists], ("\u00e9", 3)]
    assert [type(v) for v in store.values()] == [int, str, float, int, int] + [int] * 7
    assert len(store) == 12 and "ab" in store and "A" not in store and 3 not in store
    assert store["c\0zz"] == 5
    for name in lists:  # an array element takes a plain value
        store[name] = 9
    assert [store[name] for name in lists] == [9] * 5
    store.clear()
    assert len(store) == 0 and list(store) == []


@pytest.mark.parametrize("value,exception", [(v, ValueError) for v in (-1, 2**32, [-1])] +
                         [(v, TypeError) for v in (None, {"a": 1}, [1, "a"], [[1]])])
def test_values_outside_the_store_types_are_refused_before_the_store(value, exception):
    store = ztcoreex.MetaData()
    with pytest.raises(exception):
        store.add("x", value)
    assert "x" not in store


E, TYPE, NAME = "Zt.Exception", "Zt.ParInvalidTypeException", "Zt.ParInvalidNameException"
STORE_REFUSALS = {  # what: (action, names of the links from the outermost, the last message)
    "missing name": (lambda s: s["nope"], [E, E], "Element 'nope' doesn't exist in meta data"),
    "write of another type": (lambda s: s.__setitem__("n", 1.0), [E, E, TYPE], "from 'double'"),
    "write of a missing name": (lambda s: s.__setitem__("x", 1), [E, E, NAME],
                                "Unknown parameter name"),
    "duplicate name": (lambda s: s.add("n", "other"), [E], "Element 'n' already exists"),
    "array write": (lambda s: s.__setitem__("list", [1, 2]), [E, E, TYPE], "from 'unsigned[]'"),
}


@pytest.mark.parametrize("action,names,last", STORE_REFUSALS.values(), ids=STORE_REFUSALS.keys())
def test_refusals_arrive_as_the_store_exception_chain(action, names, last):
    store = _store(n=5, list=[1.0])
    with pytest.raises(ztcoreex.Error) as caught:
        action(store)
    links, link, text = [], caught.value, str(caught.value)
    while link is not None:  # the text reads like the library's: each link where it was raised
        links.append(link)
        assert link.message in text and link.function in text and str(link.line) in text
        assert link.file and link.line > 0
        link = link.inner
    assert [link.name for link in links] == names and links[-1].message.endswith(last)
    assert dict(store.items()) == {"list": 0, "n": 5}


def test_copies_share_no_element():
    store = _store(a=1)
    for duplicate in (store.copy(), copy.copy(store)):
        duplicate["a"] = 2
        assert dict(store.items()) == {"a": 1}
