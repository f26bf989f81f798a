// A library that tests load at run time. It counts from 1 each time the system loads it anew.

extern "C" int counterNext();

int counterNext() {
  static int count = 0;
  return ++count;
}
