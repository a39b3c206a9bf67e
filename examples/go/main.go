package main

import (
	"context"
	"encoding/json"
	"fmt"
	"os"
	"os/signal"

	"tolmar"
)

func run() error {
	// The text itself; Path names a file. The agent asks the service while it starts.
	configuration, err := os.ReadFile(os.Args[1])
	if err != nil {
		return err
	}
	if err := tolmar.Start(tolmar.Configuration{JSON: string(configuration)}); err != nil {
		return err
	}
	defer tolmar.Stop() // always, before the process ends

	titles, err := tolmar.EntitledSoftware()
	if err != nil {
		return err
	}
	ctx, stop := signal.NotifyContext(context.Background(), os.Interrupt) // Ctrl-C cancels
	defer stop()
	installed, err := tolmar.Install(ctx, titles, false, func(p tolmar.Progress) {
		fmt.Printf("%s: %s, %d %%\n", p.Title, p.Status, p.Percent)
	})
	var list struct {
		SwList []struct{ L1FruPn, Status string }
	}
	if json.Unmarshal(installed, &list) == nil {
		for _, title := range list.SwList {
			fmt.Printf("%s: %s\n", title.L1FruPn, title.Status)
		}
	}
	return err
}

func main() {
	if err := run(); err != nil {
		fmt.Fprintln(os.Stderr, err)
		os.Exit(1)
	}
}
