import pathlib
import sys

# The reference module sits beside the tests.
sys.path.insert(0, str(pathlib.Path(__file__).parent))
