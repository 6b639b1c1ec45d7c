package com.kelvo.tessel.windows;

import java.util.concurrent.Callable;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.FutureTask;
import java.util.concurrent.TimeUnit;

/** Work on a thread of its own, and its result or failure. */
final class Background<T> {
  private static final long PATIENCE_SECONDS = 400;

  private final FutureTask<T> task;

  Background(Callable<T> work) {
    task = new FutureTask<>(work);
    Thread thread = new Thread(task);
    thread.setDaemon(true); // what hangs fails its test, not the end of the run
    thread.start();
  }

  T result() throws Exception {
    try {
      return task.get(PATIENCE_SECONDS, TimeUnit.SECONDS);
    } catch (ExecutionException failure) {
      if (failure.getCause() instanceof Exception) {
        throw (Exception) failure.getCause();
      }
      throw (Error) failure.getCause();
    }
  }
}
