/** Requests and replies between processes of one machine: what a server implements and what a client may catch. */
package com.kelvo.tessel.ipc;
